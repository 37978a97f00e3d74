# The reference values of tests/system/probabilityerrors_test.cpp: the standard errors of the probabilities
# that R finds for the rows of cases.
#
#   Rscript tests/data/probability-errors/reference.R TESTS/DATA
#
# Made with R 4.2.2, MASS 7.3-58.2, nnet 7.3-18 and the tables of tests/data/cases. Of models of two categories
# predict(se.fit = TRUE) of the model that is fitted once more; of more categories, for which R has no such function,
# sqrt(g' V g) with vcov of R's fit. Multinomial models take the derivatives g by a step along the imaginary axis,
# which loses no digits, ordinal ones by the densities of the links.
data <- commandArgs(TRUE)[1]
generator <- file.path(data, "generator")
source(file.path(generator, "fits.R"))
digits <- function(x) sprintf("%.17g", x)
write <- function(name, errors) {
  write.csv(apply(errors, 2, digits), quote = FALSE, row.names = FALSE,
            file.path(data, "probability-errors", paste0(name, ".csv")))
}
input <- function(name) read.csv(file.path(data, "cases", name, "input.csv"))
# The rows of the design of a fit, with its factors' levels and contrasts.
design <- function(fit, rows) {
  for (factor in names(fit$xlevels)) rows[[factor]] <- factor(rows[[factor]], fit$xlevels[[factor]])
  model.matrix(delete.response(terms(fit)), rows, contrasts.arg = fit$contrasts)
}

for (name in c("blr-birthwt-sum", "blr-birthwt-cutoff", "blr-bacteria-helmert")) {
  error <- predict(fit_of(name), input(name), type = "response", se.fit = TRUE)$se.fit
  write(name, cbind(first = error, second = error))
}

# The first category has no parameters; those of the others stand one category after the other.
for (name in c("mlr-birthwt-race", "mlr-birthwt-visits-numeric", "mlr-housing-factors")) {
  fit <- fit_of(name)
  V <- vcov(fit)
  betas <- as.vector(t(coef(fit)))
  probability <- function(x, b) {
    eta <- c(0, colSums(matrix(b, length(x)) * x))
    exp(eta) / sum(exp(eta))
  }
  step <- 1e-30
  errors <- t(apply(design(fit, input(name)), 1, function(x) {
    g <- sapply(seq_along(betas), function(i) {
      b <- as.complex(betas)
      b[i] <- b[i] + complex(imaginary = step)
      Im(probability(x, b)) / step
    })
    sqrt(diag(g %*% V %*% t(g)))
  }))
  colnames(errors) <- fit$lev
  write(name, errors)
}

# The probability of a category is F(threshold - x b) less that of the category before; V has the slopes first.
densities <- list(logistic = dlogis, probit = dnorm, cauchit = dcauchy,
                  cloglog = function(x) exp(x - exp(x)), loglog = function(x) exp(-x - exp(-x)))
for (name in c("ordinal-logit-housing", "ordinal-probit-cumulative-only", "ordinal-cloglog-survey",
               "ordinal-loglog-warpbreaks", "ordinal-gzlm-logit-airquality", "ordinal-gzlm-cauchit-housing",
               "ordinal-gzlm-cloglog-housing")) {
  fit <- fit_of(name)
  V <- vcov(fit)
  X <- design(fit, input(name))[, names(coef(fit)), drop = FALSE]
  errors <- t(apply(X, 1, function(x) {
    slope <- densities[[fit$method]](fit$zeta - sum(x * coef(fit)))
    cumulative <- cbind(outer(-slope, x), diag(slope))  # a row for each boundary
    g <- rbind(cumulative, 0) - rbind(0, cumulative)
    sqrt(diag(g %*% V %*% t(g)))
  }))
  colnames(errors) <- fit$lev
  write(name, errors)
}
