# Cox models of R, with what R says of survival at given times, of medians and of risks.
#
#     Rscript r_survival.R FOLDER
#
# writes a folder for each model into FOLDER: model.pmml, input.csv and expected.csv with 17 digits,
# in which an empty field means that there is no such number. Ran with R 4.2.2 and survival 3.5-3.
#
#   linear_predictor  predict(type = "lp", reference = "sample")
#   risk              its exp
#   median_survival   the median that survfit of the row prints
#   survival@T        summary(survfit of the row, times = T); none beyond the curve's last time

library(survival)
folder <- commandArgs(trailingOnly = TRUE)[1]

digits <- function(x) ifelse(is.na(x), "", sprintf("%.17g", x))
attribute <- function(name, value) sprintf(" %s=\"%s\"", name, as.character(value))

cells <- function(part) {
  sprintf("    <BaselineCell%s%s/>", attribute("time", digits(part$time)),
          attribute("cumHazard", digits(part$hazard)))
}

# Factors of text enter by treatment contrasts; `strata` names the stratum variable, or is NULL.
write_model <- function(fit, data, time, status, factors, covariates, strata, path) {
  field <- function(name) {
    column <- data[[name]]
    if (!is.factor(column)) {
      return(sprintf("  <DataField%s optype=\"continuous\" dataType=\"double\"/>", attribute("name", name)))
    }
    c(sprintf("  <DataField%s optype=\"categorical\" dataType=\"string\">", attribute("name", name)),
      sprintf("   <Value%s/>", attribute("value", levels(column))), "  </DataField>")
  }
  names <- c(status, time, covariates, factors, strata)
  betas <- coef(fit)
  parameter <- sprintf("p%d", seq_along(betas))
  matrix_cell <- function(i) {
    name <- names(betas)[i]
    for (each in factors) {
      level <- substring(name, nchar(each) + 1)
      if (startsWith(name, each) && level %in% levels(data[[each]])) return(c(each, level))
    }
    c(name, "1")
  }
  placed <- vapply(seq_along(betas), matrix_cell, c("", ""))
  base <- basehaz(fit, centered = TRUE)
  baseline <- if (is.null(strata)) {
    c(sprintf("   <BaseCumHazardTables%s>", attribute("maxTime", digits(max(base$time)))), cells(base))
  } else {
    base$strata <- sub(".*=", "", as.character(base$strata))
    c("   <BaseCumHazardTables>", unlist(lapply(levels(data[[strata]]), function(level) {
      part <- base[base$strata == level, ]
      c(sprintf("   <BaselineStratum%s%s>", attribute("value", level),
                attribute("maxTime", digits(max(part$time)))), cells(part), "   </BaselineStratum>")
    })))
  }
  predictors <- function(element, names) {
    if (!length(names)) return(NULL)
    c(sprintf("   <%s>", element), sprintf("    <Predictor%s/>", attribute("name", names)),
      sprintf("   </%s>", element))
  }
  writeLines(c(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
    "<PMML xmlns=\"http://www.dmg.org/PMML-4_4\" version=\"4.4\">", " <Header/>",
    " <DataDictionary>", unlist(lapply(names, field)), " </DataDictionary>",
    sprintf(" <GeneralRegressionModel modelType=\"CoxRegression\" functionName=\"regression\"%s%s%s>",
            attribute("endTimeVariable", time), attribute("statusVariable", status),
            if (is.null(strata)) "" else attribute("baselineStrataVariable", strata)),
    "   <MiningSchema>",
    sprintf("    <MiningField%s%s/>", attribute("name", names),
            attribute("usageType", ifelse(names == status, "target", "active"))),
    "   </MiningSchema>", "   <ParameterList>",
    sprintf("    <Parameter%s%s%s/>", attribute("name", parameter), attribute("label", names(betas)),
            attribute("referencePoint", digits(fit$means))),
    "   </ParameterList>", predictors("FactorList", factors), predictors("CovariateList", covariates),
    "   <PPMatrix>",
    sprintf("    <PPCell%s%s%s/>", attribute("value", placed[2, ]),
            attribute("predictorName", placed[1, ]), attribute("parameterName", parameter)),
    "   </PPMatrix>", "   <ParamMatrix>",
    sprintf("    <PCell%s%s df=\"1\"/>", attribute("parameterName", parameter),
            attribute("beta", digits(betas))),
    "   </ParamMatrix>", "   <EventValues><Value value=\"1\"/></EventValues>", baseline,
    "   </BaseCumHazardTables>", " </GeneralRegressionModel>", "</PMML>"), path)
}

expected_of <- function(fit, rows, times) {
  lp <- predict(fit, newdata = rows, type = "lp", reference = "sample")
  answers <- lapply(seq_len(nrow(rows)), function(i) {
    curve <- survfit(fit, newdata = rows[i, , drop = FALSE], se.fit = FALSE)
    at <- rep(NA_real_, length(times))
    within <- times <= max(curve$time)
    at[within] <- summary(curve, times = times[within])$surv
    c(summary(curve)$table[["median"]], at)
  })
  table <- cbind(lp, exp(lp), do.call(rbind, answers))
  colnames(table) <- c("linear_predictor", "risk", "median_survival", paste0("survival@", times))
  table
}

write_case <- function(name, fit, data, time, status, factors, covariates, strata, rows, times) {
  path <- function(file) file.path(folder, name, file)
  dir.create(file.path(folder, name), showWarnings = FALSE, recursive = TRUE)
  write_model(fit, data, time, status, factors, covariates, strata, path("model.pmml"))
  shown <- rows[c(covariates, factors, strata)]
  for (column in names(shown)) {
    if (is.numeric(shown[[column]])) shown[[column]] <- digits(shown[[column]])
  }
  write.csv(shown, path("input.csv"), row.names = FALSE, quote = FALSE)
  table <- apply(expected_of(fit, rows, times), 2, digits)
  write.csv(table, path("expected.csv"), row.names = FALSE, quote = FALSE)
}

lung <- na.omit(survival::lung[c("time", "status", "age", "sex", "ph.karno")])
lung$status <- lung$status - 1
lung$sex <- factor(lung$sex, 1:2, c("male", "female"))
some <- lung[seq(1, nrow(lung), by = 19), ]
for (ties in c("efron", "breslow")) {
  fit <- coxph(Surv(time, status) ~ age + ph.karno + sex, lung, ties = ties)
  write_case(paste0("lung-", ties), fit, lung, "time", "status", "sex", c("age", "ph.karno"), NULL,
             some, c(0, 5, 30.5, 180, 365, 1022, 1500))
}

veteran <- survival::veteran
veteran$trt <- factor(veteran$trt, 1:2, c("standard", "test"))
some <- veteran[seq(1, nrow(veteran), by = 11), ]
for (ties in c("efron", "breslow")) {
  fit <- coxph(Surv(time, status) ~ karno + trt + strata(celltype), veteran, ties = ties)
  write_case(paste0("veteran-strata-", ties), fit, veteran, "time", "status", "trt", "karno",
             "celltype", some, c(2, 30, 100, 186, 187, 392, 600))
}

heart <- survival::heart
heart$transplant <- factor(heart$transplant, 0:1, c("no", "yes"))
fit <- coxph(Surv(start, stop, event) ~ age + year + transplant, heart)
write_case("heart-start-stop", fit, heart, "stop", "event", "transplant", c("age", "year"), NULL,
           heart[seq(1, nrow(heart), by = 15), ], c(0.5, 1, 60, 365.25, 1386, 2000))
