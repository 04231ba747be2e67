# Where the numbers of NeuralNetworkTest's nnet cases come from: R with the package nnet, `Rscript neural.R`.
# The weights are given, so nothing is trained. nnet orders them by target unit, the bias first.
library(nnet)
x <- matrix(c(0.5, -1, 2, 0.25, 0, 0, -3, 1.5), ncol = 2, byrow = TRUE)
hidden <- c(0.1, 0.5, -0.4, -0.2, 0.3, 0.8, 0.7, -0.6, 0.9)

linear <- nnet(x, c(0, 0, 0, 0), size = 3, Wts = c(hidden, 0.4, 1.5, -2, 0.25), linout = TRUE, maxit = 0, trace = FALSE)
print(predict(linear, x), digits = 17)

classes <- diag(3)[c(1, 2, 3, 1), ]
output <- c(0.3, 1, -1, 0.5, -0.1, 0.2, 0.6, -1.2, 0.05, -0.7, 0.9, 1.1)
softmax <- nnet(x, classes, size = 3, Wts = c(hidden, output), softmax = TRUE, maxit = 0, trace = FALSE)
print(predict(softmax, x), digits = 17)

# A skip layer: the output takes the inputs as well, after the hidden units.
skip <- nnet(x, c(0, 0, 0, 0), size = 3, Wts = c(hidden, 0.4, 1.5, -2, 0.25, 0.125, -0.75), linout = TRUE, skip = TRUE,
             maxit = 0, trace = FALSE)
print(predict(skip, x), digits = 17)
