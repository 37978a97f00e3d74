# The reference values of linear predictors and their standard errors in tests/system/probabilityerrors_test.cpp:
# predict(se.fit = TRUE) of R for the rows of cases, fitted once more.
#
#   Rscript tests/data/predictor-errors/reference.R TESTS/DATA
#
# Made with R 4.2.2 and survival 3.5-3.
data <- commandArgs(TRUE)[1]
generator <- file.path(data, "generator")
source(file.path(generator, "fits.R"))
input <- function(name, fit) {
  rows <- read.csv(file.path(data, "cases", name, "input.csv"))
  for (factor in names(fit$xlevels)) rows[[factor]] <- factor(rows[[factor]], fit$xlevels[[factor]])
  rows
}
write <- function(name, found) {
  table <- data.frame(linear_predictor = found$fit, std_err = found$se.fit)
  write.csv(lapply(table, sprintf, fmt = "%.17g"), quote = FALSE, row.names = FALSE,
            file.path(data, "predictor-errors", paste0(name, ".csv")))
}

for (name in c("blr-bacteria-helmert", "blr-birthwt-sum")) {
  fit <- fit_of(name)
  write(name, predict(fit, input(name, fit), type = "link", se.fit = TRUE))
}

name <- "cox-veteran-uncentred"
fit <- fit_of(name)
write(name, predict(fit, input(name, fit), type = "lp", reference = "zero", se.fit = TRUE))

# R doesn't centre indicators unless it is told to; the document centres all columns.
name <- "cox-heart-start-stop"
fit <- fit_of(name)
fit <- do.call(coxph, list(formula(fit), eval(fit$call$data), ties = fit$call$ties, nocenter = NULL))
write(name, predict(fit, input(name, fit), type = "lp", reference = "sample", se.fit = TRUE))
