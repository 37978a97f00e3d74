# Logistic regression: binary with contrast matrices, conditional, multinomial.

classes <- c("normal", "low")

add_case("blr-bacteria-helmert", function() {
  data <- transform(MASS::bacteria, trt = factor(trt, c("placebo", "drug", "drug+")))
  fit <- glm(y ~ trt * week, binomial, data, contrasts = list(trt = "contr.helmert"))
  contrast_case(fit, data, c("n", "y"), "helmert", integers = "week")
})

add_case("blr-birthwt-cutoff", function() {
  fit <- glm(weight_class ~ race + ui + lwt, binomial, birthwt_cases, contrasts = list(race = "contr.sum"))
  contrast_case(fit, birthwt_cases, classes, "mixed", cutoff = 0.3)
})

add_case("blr-birthwt-no-category-list", function() {
  fit <- glm(weight_class ~ race + visits + lwt, binomial, birthwt_cases,
             contrasts = list(race = "contr.helmert", visits = "contr.sum"))
  contrast_case(fit, birthwt_cases, classes, "mixed", listed = FALSE, integers = "visits")
})

add_case("blr-birthwt-sum", function() {
  fit <- glm(weight_class ~ race + smoke + lwt, binomial, birthwt_cases,
             contrasts = list(race = "contr.sum", smoke = "contr.sum"))
  contrast_case(fit, birthwt_cases, classes, "deviation")
})

add_case("blr-birthwt-treatment", function() {
  fit <- glm(weight_class ~ race * ht + age, binomial, birthwt_cases)
  contrast_case(fit, birthwt_cases, classes, "indicator", covariances = FALSE)
})

add_case("clr-infert", function() {
  fit <- clogit(case ~ spontaneous + induced + strata(stratum), infert)
  conditional_case(fit, infert, "status", c("case", "control"), c("spontaneous", "induced"))
})

# do.call leaves values in the fit's call: vcov() evaluates that once more.
fit_multinomial <- function(formula, data, ...) {
  do.call(multinom, list(formula, data, trace = FALSE, maxit = 1000, reltol = 1e-12, ...))
}

add_case("mlr-birthwt-race", function() {
  fit <- fit_multinomial(race ~ age + lwt + smoke + ht, birthwt_cases)
  multinomial_case(fit, birthwt_cases, integers = c("age", "lwt"), covariances = TRUE)
})

add_case("mlr-birthwt-visits-numeric", function() {
  fit <- fit_multinomial(visits ~ age * smoke + lwt, birthwt_cases)
  multinomial_case(fit, birthwt_cases, integers = "visits", covariances = TRUE)
})

add_case("mlr-housing-factors", function() {
  fit <- fit_multinomial(Sat ~ Infl + Type + Cont, MASS::housing, weights = MASS::housing$Freq)
  multinomial_case(fit, MASS::housing, covariances = TRUE)
})

add_case("mlr-iris-squared", function() {
  multinomial_case(fit_multinomial(Species ~ Sepal.Width + I(Sepal.Width^2) + Sepal.Length, iris), iris)
})

add_case("missing-mlr-replacement", function() {
  fit <- fit_multinomial(race ~ age + lwt + smoke, birthwt_cases)
  rows <- with_blanks(rows_of(birthwt_cases, inputs_of(fit), 80, differ_in = names(MASS::birthwt)),
                      list(age = c(3, 44, 51, 58, 71, 75), smoke = c(30, 51, 56, 62)))
  multinomial_case(fit, birthwt_cases, rows = rows, special = replacements(age = 23, lwt = 130), reference = FALSE,
                   intercept = "(Intercept)", description = "")
})

# An empty factor counts as its reference category.
add_case("missing-mlr-allowed-factors", function() {
  fit <- fit_multinomial(race ~ age + lwt + smoke + ht, birthwt_cases)
  rows <- with_blanks(rows_of(birthwt_cases, inputs_of(fit), 60, differ_in = names(MASS::birthwt)),
                      list(age = c(30, 35, 42, 44), smoke = c(3, 6, 12, 19, 24, 48, 53, 59),
                           ht = c(18, 30, 37, 44, 57, 59)))
  scored <- with_replacements(rows, replacements(smoke = "no", ht = "no"))
  multinomial_case(fit, birthwt_cases, rows = rows, probabilities = predict(fit, scored, type = "probs"),
                   reference = FALSE, intercept = "(Intercept)",
                   extensions = extension("allowMissingFactors", value = "true"), description = "")
})

# The older form.

add_case("legacy-lm-stackloss", function() {
  fit <- lm(stack.loss ~ ., stackloss)
  inputs <- inputs_of(fit)
  parameters <- design_parameters(fit, "(Constant)")
  fields <- c(list(field("stack.loss", stackloss$stack.loss)), input_fields(stackloss, inputs, character()))
  rows <- stackloss[inputs]
  list(document = old_document(fields, parameters, stackloss, old_cells(parameters, coef(fit)), vcov(fit),
                               "model-type" = "regression", "model-df" = fit$df.residual),
       table = rows, expected = linear_expected(fit, rows))
})

add_case("legacy-mlr-birthwt", function() {
  data <- transform(birthwt_cases, smoke = factor(smoke, labels = 0:1))
  fit <- fit_multinomial(race ~ smoke * age + lwt, data)
  inputs <- inputs_of(fit)
  parameters <- design_parameters(fit, "(Constant)")
  fields <- c(list(field("race", data$race)), input_fields(data, inputs, "smoke"))
  cells <- each(fit$lev[-1], function(category) old_cells(parameters, coef(fit)[category, ], category))
  rows <- rows_of(data, inputs)
  list(document = old_document(fields, parameters, data, cells, "model-type" = "multinomial-logistic"),
       table = rows, expected = category_expected(predict(fit, rows, type = "probs")))
})
