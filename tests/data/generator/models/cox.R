# Cox regression.

lung_cases <- local({
  kept <- na.omit(survival::lung[c("time", "status", "age", "sex", "ph.ecog", "wt.loss")])
  transform(kept, event = status - 1, sex = factor(sex, 1:2, c("male", "female")), ecog = factor(pmin(ph.ecog, 2)),
            ph.ecog = factor(ph.ecog))
})
fit_cox <- function(formula, data) do.call(coxph, list(formula, data, ties = "breslow"))
veteran_cases <- transform(survival::veteran, trt = factor(trt))

add_case("cox-lung-centred", function() {
  fit <- fit_cox(Surv(time, event) ~ age + sex + ecog + wt.loss, lung_cases)
  cox_case(fit, lung_cases, "time", "event", integers = c("time", "age", "ecog"))
})

add_case("cox-lung-extensions-3.2", function() {
  fit <- fit_cox(Surv(time, event) ~ age + sex + wt.loss, lung_cases)
  cox_case(fit, lung_cases, "time", "event", version = "3.2", events_alone = TRUE)
})

add_case("cox-lung-numeric-strata", function() {
  fit <- fit_cox(Surv(time, event) ~ age + sex + strata(ecog), lung_cases)
  cox_case(fit, lung_cases, "time", "event", centred = FALSE, strata = "ecog", integers = "ecog",
           aliased = list(name = "P0000003", factor = "sex", level = "male"))
})

add_case("cox-veteran-strata", function() {
  fit <- fit_cox(Surv(time, status) ~ trt + karno + I(karno^2) + strata(celltype), veteran_cases)
  cox_case(fit, veteran_cases, "time", "status", strata = "celltype", integers = "trt", events_alone = TRUE)
})

# The expected numbers are those of the same model with indicators.
add_case("cox-veteran-contrasts", function() {
  coded <- veteran_cases
  contrasts(coded$celltype) <- "contr.sum"
  contrasts(coded$trt) <- "contr.helmert"
  formula <- Surv(time, status) ~ celltype + trt + karno
  fit <- fit_cox(formula, coded)
  cox_case(fit, veteran_cases, "time", "status", coding = contrast_matrices(fit), integers = "trt",
           scoring = fit_cox(formula, veteran_cases))
})

# Times before the first event, at events and between them, at the last time and past it.
add_case("cox-veteran-uncentred", function() {
  fit <- fit_cox(Surv(time, status) ~ trt * karno + celltype + age, veteran_cases)
  rows <- rows_of(veteran_cases, c("time", "trt", "karno", "celltype", "age", "status"), 60)
  rows$time <- rep(c(0.5, 1, 8, 100, 999, 1000), 10)
  cox_case(fit, veteran_cases, "time", "status", centred = FALSE, integers = "trt", rows = rows, events_alone = TRUE,
           covariances = TRUE)
})

add_case("cox-heart-start-stop", function() {
  data <- transform(survival::heart, surgery = factor(surgery, 0:1, c("no", "yes")))
  fit <- fit_cox(Surv(start, stop, event) ~ age + surgery + transplant, data)
  cox_case(fit, data, c("stop", "start"), "event", integers = "transplant", covariances = TRUE)
})

add_case("missing-cox-replacement", function() {
  fit <- fit_cox(Surv(time, event) ~ age + wt.loss, lung_cases)
  rows <- with_blanks(rows_of(lung_cases, c("time", "age", "wt.loss"), 60),
                      list(time = c(3, 19, 55), age = c(2, 11, 15, 43, 57), wt.loss = c(7, 21, 30, 41, 57)))
  cox_case(fit, lung_cases, "time", "event", centred = FALSE, rows = rows, special = replacements(wt.loss = 7),
           short = TRUE, description = "")
})
