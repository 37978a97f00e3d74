# Empty fields: some are replaced as the mining schema says; a row with another has no score, as R has none.

airquality_case <- function(special = list()) {
  fit <- lm(Ozone ~ Solar.R + Wind + Temp, airquality)
  rows <- with_blanks(rows_of(na.omit(airquality), inputs_of(fit), 60),
                      list(Solar.R = c(1, 4, 23, 34, 39, 57), Wind = c(14, 18, 33, 43, 51), Temp = c(21, 42, 54, 60)))
  linear_case(fit, airquality, rows = rows, special = special)
}
add_case("missing-lm-no-replacement", function() airquality_case())
add_case("missing-lm-replacement", function() airquality_case(replacements(Solar.R = 184.8, Temp = 77.79)))

add_case("missing-glm-replacement", function() {
  data <- transform(mtcars, cyl = factor(cyl))
  fit <- lm(mpg ~ cyl + wt + hp + I(hp^2), data)
  rows <- with_blanks(data[inputs_of(fit)], list(cyl = c(8, 20, 31), wt = c(5, 7, 12, 26), hp = c(4, 8, 11, 26)))
  linear_case(fit, data, rows = rows, general = TRUE, integers = "cyl", special = replacements(hp = 146.7),
              description = "")
})

birthwt_replacement <- function(special) {
  fit <- glm(low ~ age + lwt + race + smoke, binomial, birthwt_cases)
  rows <- with_blanks(rows_of(birthwt_cases, inputs_of(fit), 80, differ_in = names(MASS::birthwt)),
                      list(age = c(6, 8, 17, 32, 70, 79), lwt = c(3, 41, 50, 65, 75, 76), race = c(50, 55, 63, 80),
                           smoke = c(8, 33, 54)))
  generalized_case(fit, birthwt_cases, "binomial", "logit", rows = rows, special = special, description = "")
}
add_case("missing-glz-replacement", function() birthwt_replacement(replacements(age = 23, lwt = 0)))
add_case("missing-glz-factor-replacement", function() {
  birthwt_replacement(replacements(age = 23, race = "other", smoke = "no"))
})
