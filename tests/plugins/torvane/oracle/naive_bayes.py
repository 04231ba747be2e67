#!/usr/bin/python3
"""Expected values of NaiveBayesModelTest.cpp, from scikit-learn (1.2.1). Not run by the tests."""

import numpy
from sklearn.naive_bayes import CategoricalNB, GaussianNB

numpy.set_printoptions(precision=17)
CATEGORIES = ["yes"] * 5 + ["no"] * 4 + ["maybe"] * 3

# Two inputs of numbers. The last records are so far away that every density is 0 in double precision.
numbers = numpy.array([[1.0, 10], [2, 12], [3, 11], [2, 9], [4, 13], [6, 20], [7, 22], [5, 21], [8, 19],
                       [0, 30], [1, 33], [2, 31]])
model = GaussianNB(var_smoothing=0).fit(numbers, CATEGORIES)
print("categories", model.classes_, "counts", model.class_count_)
print("means", model.theta_, "variances", model.var_, sep="\n")
for record in [[2.5, 11], [4.5, 17], [3, 25], [60, 11], [-80, 400]]:
    print(record, model.predict([record]), model.predict_proba([record]))

# Two inputs of categories, each of which every category of the target has seen.
texts = numpy.array([[0, 0], [0, 1], [1, 1], [2, 0], [0, 1], [1, 0], [1, 1], [2, 1], [0, 0], [0, 1], [1, 0], [2, 1]])
model = CategoricalNB(alpha=0, force_alpha=True).fit(texts, CATEGORIES)
print("pair counts", *model.category_count_, sep="\n")
for record in [[0, 0], [1, 1], [2, 0], [2, 1]]:
    print(record, model.predict([record]), model.predict_proba([record]))
