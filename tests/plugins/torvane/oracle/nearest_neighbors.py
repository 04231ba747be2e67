"""Known answers of nearest neighbour models, from scikit-learn 1.2.1 (Debian's python3-sklearn).

Prints the rows that NearestNeighborModelTest.cpp holds. The tests don't run this.
"""
from sklearn.neighbors import KNeighborsClassifier, KNeighborsRegressor

INSTANCES = [
    (5.1, 3.5, 1.4), (4.9, 3.0, 1.4), (7.0, 3.2, 4.7), (6.4, 3.2, 4.5), (6.9, 3.1, 4.9), (5.5, 2.3, 4.0),
    (6.3, 3.3, 6.0), (5.8, 2.7, 5.1), (7.1, 3.0, 5.9), (6.3, 2.9, 5.6), (5.0, 3.6, 1.5), (6.5, 2.8, 4.6),
]
NUMBERS = [0.2, 0.25, 1.4, 1.5, 1.55, 1.3, 2.5, 1.9, 2.1, 1.8, 0.15, 1.45]
CATEGORIES = ["a", "a", "b", "b", "b", "b", "c", "c", "c", "c", "a", "b"]
QUERIES = [(6.0, 3.0, 4.8), (5.2, 3.2, 2.9), (6.7, 3.1, 5.3)]
METRICS = {"euclidean": {}, "chebyshev": {}, "manhattan": {}, "minkowski": {"p": 3}}


def weights(distances):
    return 1.0 / (distances + 0.25)


for metric, more in METRICS.items():
    for query in QUERIES:
        settings = {"n_neighbors": 5, "metric": metric, "algorithm": "brute", **more}
        plain = KNeighborsRegressor(weights="uniform", **settings).fit(INSTANCES, NUMBERS)
        weighted = KNeighborsRegressor(weights=weights, **settings).fit(INSTANCES, NUMBERS)
        vote = KNeighborsClassifier(weights=weights, **settings).fit(INSTANCES, CATEGORIES)
        distances, neighbors = plain.kneighbors([query])
        print(metric, query, (neighbors[0] + 1).tolist(), repr(float(distances[0][1])), repr(float(plain.predict([query])[0])),
              repr(float(weighted.predict([query])[0])), vote.predict([query])[0], repr(float(vote.predict_proba([query])[0][1])))
