# Ordinal regression.

# An R formula's fit; links other than the logistic start from that one's.
fit_ordinal <- function(formula, data, method = "logistic", weights = rep(1, nrow(data))) {
  fit <- function(...) do.call(polr, list(formula, data, weights = weights, Hess = TRUE, ...))
  first <- fit()
  if (method == "logistic") first else fit(method = method, start = c(coef(first), first$zeta))
}

housing_case <- function(method, link, generalized = FALSE) {
  fit <- fit_ordinal(Sat ~ Infl + Type + Cont, MASS::housing, method, MASS::housing$Freq)
  ordinal_case(fit, MASS::housing, link, generalized, covariances = TRUE)
}
add_case("ordinal-logit-housing", function() housing_case("logistic", "logit"))
add_case("ordinal-gzlm-cauchit-housing", function() housing_case("cauchit", "cauchit", generalized = TRUE))
add_case("ordinal-gzlm-cloglog-housing", function() housing_case("cloglog", "cloglog", generalized = TRUE))

add_case("ordinal-loglog-warpbreaks", function() {
  data <- transform(warpbreaks, class = cut(breaks, c(-Inf, 18, 26, 36, Inf), 1:4, ordered_result = TRUE))
  fit <- polr(class ~ wool * tension, data, method = "loglog", Hess = TRUE)
  ordinal_case(fit, data, "loglog", integers = "class", covariances = TRUE)
})

add_case("ordinal-cloglog-survey", function() {
  data <- na.omit(MASS::survey[c("Exer", "Sex", "Age", "Pulse", "Wr.Hnd")])
  data$Exer <- factor(data$Exer, c("None", "Some", "Freq"), ordered = TRUE)
  ordinal_case(fit_ordinal(Exer ~ Sex + Age + Pulse, data, "cloglog"), data, "cloglog", covariances = TRUE)
})

ozone <- transform(na.omit(airquality),
                   level = cut(Ozone, c(-Inf, 20, 50, Inf), c("low", "middle", "high"), ordered_result = TRUE))
add_case("ordinal-probit-airquality", function() {
  ordinal_case(fit_ordinal(level ~ Temp + Wind, ozone, "probit"), ozone, "probit")
})
add_case("ordinal-probit-cumulative-only", function() {
  fit <- fit_ordinal(level ~ Temp + Wind + Solar.R, ozone, "probit")
  ordinal_case(fit, ozone, "probit", link_function = FALSE, covariances = TRUE)
})
add_case("ordinal-gzlm-logit-airquality", function() {
  fit <- fit_ordinal(level ~ Temp + Wind + Solar.R, ozone)
  ordinal_case(fit, ozone, "logit", generalized = TRUE, covariances = TRUE)
})
