# Linear and general linear models.

add_case("lm-swiss", function() linear_case(lm(Fertility ~ ., swiss), swiss))

add_case("lm-longley", function() {
  linear_case(lm(Employed ~ ., longley), longley, constant = "last", cells = FALSE)
})

add_case("lm-stackloss-no-constant", function() {
  linear_case(lm(stack.loss ~ . - 1, stackloss), stackloss)
})

add_case("glm-iris-no-intercept", function() {
  fit <- lm(Petal.Width ~ Species * Sepal.Length + Sepal.Width - 1, iris)
  linear_case(fit, iris, general = TRUE)
})

add_case("glm-mtcars-interaction", function() {
  data <- transform(mtcars, cyl = factor(cyl), am = factor(am, 0:1, c("automatic", "manual")))
  fit <- lm(mpg ~ cyl + am * wt + hp + I(hp^2), data)
  linear_case(fit, data, general = TRUE, integers = c("cyl", "hp"))
})

add_case("glm-sleep-paired", function() {
  linear_case(lm(extra ~ group + ID, sleep), sleep, general = TRUE, integers = "ID")
})

add_case("glm-toothgrowth-aliased", function() {
  fit <- lm(len ~ supp * dose + I(dose^2), ToothGrowth)
  grid <- expand.grid(supp = factor(levels(ToothGrowth$supp)), dose = c(0, seq(0.3, 2.2, 0.1), 1))
  linear_case(fit, ToothGrowth, rows = grid, general = TRUE,
              aliased = list(name = "pr1", factor = "supp", level = "OJ"))
})

add_case("glm-warpbreaks-odd-names", function() {
  data <- warpbreaks
  levels(data$wool) <- c("Wolle Ä", "laine écrue")
  levels(data$tension) <- c("low, loose", "medium \"M\"", "high & <tight>")
  linear_case(lm(breaks ~ wool * tension, data), data, general = TRUE)
})

add_case("outliers-extreme-lm", function() {
  fit <- lm(Fertility ~ Agriculture + Education + Catholic, swiss)
  rows <- rows_of(swiss, inputs_of(fit))
  linear_case(fit, swiss, rows = rows, scored = transform(rows, Agriculture = pmin(pmax(Agriculture, 20), 80)),
              special = list(Agriculture = list(outliers = "asExtremeValues", lowValue = 20, highValue = 80)))
})
