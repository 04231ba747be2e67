# Makes the known answers of GeneralRegressionModelTest.cpp: coefficients that R fits, and what R predicts with them.
# Run: Rscript GeneralRegression.R. Not run by the tests. The answers in the test were made with the versions below.
suppressMessages({library(MASS); library(nnet); library(survival)})
cat(R.version.string, "MASS", format(packageVersion("MASS")), "nnet", format(packageVersion("nnet")),
    "survival", format(packageVersion("survival")), "\n")
show <- function(name, x) cat(name, paste(format(x, digits = 15, trim = TRUE), collapse = ", "), "\n")

# Links of generalized linear models: mtcars, one covariate, predictions for the first and the last car.
two <- mtcars[c(1, 32), ]
glms <- list(
  identity = glm(mpg ~ wt, gaussian, mtcars),
  log = glm(carb ~ wt, poisson, mtcars),
  logit = glm(am ~ wt, binomial, mtcars),
  probit = glm(am ~ wt, binomial("probit"), mtcars),
  cloglog = glm(am ~ wt, binomial("cloglog"), mtcars),
  cauchit = glm(am ~ wt, binomial("cauchit"), mtcars),
  power_minus_one = glm(mpg ~ wt, Gamma("inverse"), mtcars),
  power_minus_two = glm(mpg ~ wt, inverse.gaussian("1/mu^2"), mtcars),
  power_half = glm(mpg ~ wt, quasi(link = power(0.5), variance = "mu"), mtcars))
for (name in names(glms)) {
  show(paste(name, "coefficients"), coef(glms[[name]]))
  show(paste(name, "predictions"), predict(glms[[name]], two, type = "response"))
}

# Offset and trials: events out of trials, with an offset.
budworm <- data.frame(dose = c(1, 2, 4, 8, 16, 32), dead = c(1, 4, 9, 13, 18, 20), n = 20, o = c(.1, .2, .3, .1, .2, .3))
trials <- glm(cbind(dead, n - dead) ~ dose + offset(o), binomial, budworm)
show("trials coefficients", coef(trials))
show("trials expected", budworm$n * predict(trials, budworm, type = "response"))

# Factors, an interaction and a square; contrasts of Helmert.
mtcars$cyl <- factor(mtcars$cyl); mtcars$gear <- factor(mtcars$gear)
helmert <- lm(mpg ~ cyl + I(wt^2) + cyl:wt, mtcars, contrasts = list(cyl = "contr.helmert"))
show("helmert coefficients", coef(helmert)); print(contr.helmert(3))
show("helmert predictions", predict(helmert, mtcars[c(1, 3, 5), ]))

# Ordinal regression: MASS::polr has F(zeta_j - eta).
for (link in c("logistic", "probit", "cloglog", "loglog", "cauchit")) {
  ordinal <- polr(Sat ~ Infl, housing, weights = Freq, method = link, start = c(0.5, 1, -0.2, 0.9))
  show(paste("polr", link, "zeta"), ordinal$zeta)
  show(paste("polr", link, "slopes"), coef(ordinal))
  show(paste("polr", link, "Medium"), predict(ordinal, data.frame(Infl = "Medium"), type = "probs"))
}

# Multinomial regression.
set.seed(1)
multi <- multinom(gear ~ wt + qsec, mtcars, trace = FALSE)
print(coef(multi), digits = 15)
show("multinom", predict(multi, mtcars[5, ], type = "probs"))

# Cox regression with strata: the baseline is that of the means.
cox <- coxph(Surv(time, status) ~ age + ph.ecog + strata(sex), lung)
show("cox coefficients", coef(cox)); show("cox means", cox$means)
base <- basehaz(cox, centered = TRUE)
for (s in levels(base$strata)) {
  b <- base[base$strata == s, ]
  at <- b[b$time %in% c(166, 303, 310, 371, 390, 426, 433), ]
  show(paste("base", s, "times"), at$time); show(paste("base", s, "hazards"), at$hazard)
}
new <- data.frame(age = c(60, 45), ph.ecog = c(2, 0), sex = c(1, 2), time = c(303, 433), status = 1)
show("cox hazard", predict(cox, new, type = "expected"))
show("cox survival", predict(cox, new, type = "survival"))
