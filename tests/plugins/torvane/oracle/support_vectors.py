"""Where the machines and numbers of SupportVectorModelTest's libsvm cases come from: scikit-learn 1.2.1.

Prints the vectors and machines of a classifier of three classes as PMML, one machine per pair of classes. libsvm decides
for the first class of a pair where its sum is positive, PMML where it is negative, so all signs are turned.
"""
import numpy as np
from sklearn.svm import SVC, SVR

X = np.array([[0, 0], [0.5, 1], [1, 0.25], [-1, 0.5], [3, 3], [2.5, 2], [3.5, 2.5], [0, 3], [-0.5, 2.5], [1, 3.5]])
Y = ["yes"] * 4 + ["no"] * 3 + ["maybe"] * 3
PROBES = [[0.25, 0.25], [2, 1.5], [0.5, 2], [1.5, 2.5], [-2, 3]]
CLASSES = ["maybe", "no", "yes"]  # as libsvm orders them


def machine(names, vectors, coefficients, constant):
    ids = "".join(f'<SupportVector vectorId="{v}"/>' for v in vectors)
    values = "".join(f'<Coefficient value="{float(c)!r}"/>' for c in coefficients)
    return (f"<SupportVectorMachine {names}><SupportVectors>{ids}</SupportVectors>"
            f'<Coefficients absoluteValue="{float(constant)!r}">{values}</Coefficients></SupportVectorMachine>')


def print_vectors(vectors):
    for i, (a, b) in enumerate(vectors):
        print(f'<VectorInstance id="{i}"><Array>{a:g} {b:g}</Array></VectorInstance>')


classifier = SVC(kernel="rbf", gamma=0.5, C=2.0, decision_function_shape="ovo").fit(X, Y)
assert list(classifier.classes_) == CLASSES
print_vectors(classifier.support_vectors_)
ends = np.cumsum(classifier.n_support_)
spans = [range(end - n, end) for end, n in zip(ends, classifier.n_support_)]
pair = 0
for i in range(3):
    for j in range(i + 1, 3):
        vectors = list(spans[i]) + list(spans[j])
        coefficients = [-classifier.dual_coef_[j - 1, v] for v in spans[i]]
        coefficients += [-classifier.dual_coef_[i, v] for v in spans[j]]
        names = f'targetCategory="{CLASSES[i]}" alternateTargetCategory="{CLASSES[j]}"'
        print(machine(names, vectors, coefficients, -classifier.intercept_[pair]))
        pair += 1
print(classifier.predict(PROBES), classifier.decision_function(PROBES))

for kernel in ("linear", "poly", "sigmoid", "rbf"):
    regression = SVR(kernel=kernel, gamma=0.25, coef0=0.5, degree=3, C=0.5, epsilon=0.5)
    regression.fit(X[[0, 2, 4, 6, 8]], [1, 2, 0, -1, 3])
    print(kernel)
    print_vectors(regression.support_vectors_)
    print(machine("", range(len(regression.support_)), regression.dual_coef_[0], regression.intercept_[0]))
    print([float(y) for y in regression.predict(PROBES)])
