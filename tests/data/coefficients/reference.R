# The reference values of tests/system/coefficients_test.cpp, one table a case: estimates, standard
# errors, t or z values, p values and 95% limits as R's summary tells them of the models of tests/data/cases, and
# odds and hazard ratios with their limits.
#
#   Rscript tests/data/coefficients/reference.R TESTS/DATA
#
# Made with R 4.2.2, MASS 7.3-58.2, nnet 7.3-18 and survival 3.5-3. t with the residual degrees of freedom in linear
# models, z in all others, as the document has no degrees of freedom for them.
data <- commandArgs(TRUE)[1]
generator <- file.path(data, "generator")
source(file.path(generator, "fits.R"))

# A matrix with the columns estimate, standard error and, where R's summary has them, value and p value.
write <- function(name, summary, equation = "", label = rownames(summary), df = Inf, ratio = NULL) {
  estimate <- summary[, 1]
  error <- summary[, 2]
  value <- if (ncol(summary) > 2) summary[, 3] else estimate / error
  p <- if (ncol(summary) > 3) summary[, 4] else 2 * pnorm(-abs(value))
  reach <- qt(0.975, df) * error
  table <- data.frame(estimate, std_err = error, value, p_value = p, ci_lower = estimate - reach,
                      ci_upper = estimate + reach)
  if (!is.null(ratio)) {
    ratios <- exp(table[c("estimate", "ci_lower", "ci_upper")])
    ratios[label == "Intercept", ] <- NA
    table[paste0(ratio, c("", "_lower", "_upper"))] <- ratios
  }
  digits <- function(x) ifelse(is.na(x), "", sprintf("%.17g", x))
  write.csv(cbind(equation, label, as.data.frame(lapply(table, digits))),
            file.path(data, "coefficients", paste0(name, ".csv")), row.names = FALSE, quote = FALSE)
}
intercept <- function(names, called = "Intercept") sub("^\\(Intercept\\)$", called, names)

for (name in c("lm-swiss", "lm-longley", "lm-stackloss-no-constant", "glm-iris-no-intercept", "glm-mtcars-interaction",
               "glm-sleep-paired", "glm-toothgrowth-aliased")) {
  fit <- fit_of(name)
  table <- coef(summary(fit))
  constant <- if (startsWith(name, "lm")) "(Constant)" else "Intercept"
  write(name, table, label = intercept(rownames(table), constant), df = df.residual(fit))
}

generalized <- function(name, equation = "", ratio = NULL) {
  table <- coef(summary(fit_of(name)))
  write(name, table, equation, intercept(rownames(table)), ratio = ratio)
}
for (name in c("glz-loglog-budworm", "glz-negbin-quine", "glz-poisson-identity-sprays", "glz-poisson-offset-insurance",
               "glz-poisson-quine", "glz-trials-value-budworm", "glz-trials-variable-menarche")) {
  generalized(name, ratio = if (name == "glz-trials-variable-menarche") "odds_ratio")
}
generalized("glz-logit-number-birthwt", ratio = "odds_ratio")
generalized("blr-birthwt-sum", "low", "odds_ratio")
generalized("blr-bacteria-helmert", "y", "odds_ratio")

for (name in c("mlr-birthwt-race", "mlr-birthwt-visits-numeric", "mlr-housing-factors")) {
  found <- summary(fit_of(name))
  by_category <- function(matrix) as.vector(t(matrix))
  terms <- intercept(found$coefnames)
  write(name, cbind(by_category(found$coefficients), by_category(found$standard.errors)),
        rep(rownames(found$coefficients), each = length(terms)), rep(terms, nrow(found$coefficients)),
        ratio = "odds_ratio")
}

# R's linear predictor is subtracted from the threshold; so it is in the documents of generalized linear models,
# the others add theirs.
for (name in c("ordinal-logit-housing", "ordinal-loglog-warpbreaks", "ordinal-cloglog-survey",
               "ordinal-probit-cumulative-only", "ordinal-gzlm-logit-airquality", "ordinal-gzlm-cauchit-housing")) {
  fit <- fit_of(name)
  table <- coef(summary(fit))[, 1:2]
  slopes <- seq_along(coef(fit))
  if (!startsWith(name, "ordinal-gzlm")) table[slopes, 1] <- -table[slopes, 1]
  thresholds <- seq_along(fit$zeta)
  write(name, rbind(table[-slopes, , drop = FALSE], table[slopes, , drop = FALSE]),
        c(fit$lev[thresholds], rep("", length(slopes))),
        c(rep("Intercept", length(thresholds)), names(coef(fit))),
        ratio = if (grepl("logit", name)) "odds_ratio")
}

for (name in c("cox-heart-start-stop", "cox-veteran-uncentred")) {
  write(name, coef(summary(fit_of(name)))[, c("coef", "se(coef)", "z", "Pr(>|z|)")], ratio = "hazard_ratio")
}
