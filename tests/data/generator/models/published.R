# Documents that R's package pmml wrote from fits of these models.

add_published <- function(folder, fit, data, inputs = inputs_of, classes = NULL, columns = inputs) {
  add_case(folder, function() {
    model <- fit(data)
    rows <- rows_of(data, columns(model), differ_in = inputs(model))
    means <- predict(model, rows, type = "response")
    expected <- if (is.null(classes)) data.frame(prediction = means) else binary_expected(means, classes)
    published_case(folder, rows, expected)
  })
}

add_published("glz-gamma-log-cars-public", function(data) glm(dist ~ speed, Gamma("log"), data), cars)
add_published("glz-normal-identity-cats-public", function(data) glm(Hwt ~ Sex * Bwt, gaussian, data), MASS::cats)
add_published("glz-poisson-warpbreaks-public", function(data) glm(breaks ~ wool * tension, poisson, data), warpbreaks)
add_published("glz-poisson-sqrt-quine", function(data) glm(Days ~ Eth + Sex + Age + Lrn, poisson("sqrt"), data),
              MASS::quine)
add_published("glz-probit-pima", function(data) glm(type ~ npreg + glu + bmi + ped, binomial("probit"), data),
              MASS::Pima.tr, classes = c("No", "Yes"))

birthwt_logit <- function(data) glm(weight_class ~ age + lwt + race + smoke, binomial, data)
add_published("glz-logit-birthwt-public", birthwt_logit, birthwt_cases, classes = c("normal", "low"))
add_published("glz-logit-birthwt", birthwt_logit, birthwt_cases, classes = c("normal", "low"),
              columns = function(fit) c(inputs_of(fit), "weight_class"))

# Derived fields: what a document makes of its fields is made here before the fit.

standardised <- function(x, by) (x - mean(by)) / sd(by)

for (folder in c("xform-functions-mtcars", "xform-functions-mtcars-glm")) {
  add_published(folder, function(data) glm(mpg ~ log(hp) + I(qsec / (1 + wt)), gaussian, data), mtcars,
                function(fit) c("hp", "wt", "qsec"))
}

for (folder in c("xform-zscore-minmax-iris", "xform-zscore-minmax-iris-glm")) {
  add_published(folder, function(data) {
    glm(Petal.Length ~ standardised(Sepal.Length, iris$Sepal.Length) + I((Petal.Width - 0.1) / 2.4) + Species,
        gaussian, data)
  }, iris, function(fit) c("Sepal.Length", "Petal.Width", "Species"))
}

age_period <- function(age) {
  factor(cut(age, c(-Inf, 20, 30, Inf), c("young", "middle", "older"), right = FALSE), c("middle", "older", "young"))
}
add_published("xform-map-discretize-birthwt", function(data) {
  glm(low ~ age_period(age) + c(white = 0, black = 1, other = 0.5)[as.character(race)] +
        standardised(lwt, birthwt_cases$lwt) + smoke, binomial, data)
}, birthwt_cases, function(fit) c("age", "lwt", "race", "smoke"))

pima_sizes <- transform(MASS::Pima.tr, size = cut(bmi, c(-Inf, 28, 35, Inf), c("small", "medium", "large")))
add_published("xform-normdiscrete-pima-public", function(data) {
  glm(type ~ as.numeric(size == "large") + as.numeric(size == "small") + standardised(glu, pima_sizes$glu) + npreg,
      binomial, data)
}, pima_sizes, function(fit) c("npreg", "glu", "size"), classes = c("No", "Yes"))

add_case("cox-lung-public", function() {
  fit <- fit_cox(Surv(time, event) ~ age + sex + ph.ecog, lung_cases)
  rows <- rows_of(lung_cases, c("time", "age", "sex", "ph.ecog"), 100)
  published_case("cox-lung-public", rows, survival_expected(fit, rows[-1], rows$time))
})
