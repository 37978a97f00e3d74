# Models of R as RegressionModel documents, with R's predictions.
#
#     Rscript r_models.R FOLDER
#
# writes a folder for each model into FOLDER: model.pmml, input.csv, expected.csv with 17 digits,
# case.json. The exporter below is written for these models: treatment contrasts, powers by I(x^n),
# and functions of one field. Ran with R 4.2.2, nnet 7.3-18 and MASS 7.3-58.2.

folder <- commandArgs(trailingOnly = TRUE)[1]
most_rows <- 60

digits <- function(x) sprintf("%.17g", x)
escape <- function(x) {
  x <- gsub("&", "&amp;", x, fixed = TRUE)
  x <- gsub("<", "&lt;", x, fixed = TRUE)
  gsub("\"", "&quot;", x, fixed = TRUE)
}
attribute <- function(name, value) sprintf(" %s=\"%s\"", name, escape(as.character(value)))

# One piece of a coefficient's name: a field to a power, a level of a factor, a function of a field.
piece_of <- function(piece, data) {
  plain <- gsub("`", "", piece, fixed = TRUE)
  if (plain %in% names(data) && is.numeric(data[[plain]])) return(list(field = plain, exponent = 1))
  power <- regmatches(piece, regexec("^I\\(`?([^`]+?)`?\\^([0-9]+)\\)$", piece))[[1]]
  if (length(power)) return(list(field = power[2], exponent = as.integer(power[3])))
  called <- regmatches(piece, regexec("^(log|sqrt|exp)\\(`?([^`]+?)`?\\)$", piece))[[1]]
  if (length(called)) return(list(field = piece, exponent = 1, call = called[2], of = called[3]))
  for (name in names(data)) {
    column <- data[[name]]
    if (is.logical(column) && identical(plain, paste0(name, "TRUE"))) return(list(field = name, level = "true"))
    if (!is.factor(column)) next
    for (level in levels(column)) {
      if (identical(plain, paste0(name, level))) return(list(field = name, level = level))
    }
  }
  stop("what is ", piece, "?")
}

# The pieces of an interaction; a level may hold a colon.
pieces_of <- function(name, data) {
  parts <- strsplit(name, ":", fixed = TRUE)[[1]]
  pieces <- list()
  held <- ""
  for (part in parts) {
    held <- if (nzchar(held)) paste(held, part, sep = ":") else part
    piece <- tryCatch(piece_of(held, data), error = function(e) NULL)
    if (is.null(piece)) next
    pieces <- c(pieces, list(piece))
    held <- ""
  }
  if (nzchar(held)) stop("what is ", name, "?")
  pieces
}

derived <- new.env()
indicator <- function(piece) {
  name <- paste0(piece$field, "=", piece$level)
  derived[[name]] <- sprintf(
    "   <DerivedField%s optype=\"continuous\" dataType=\"double\"><NormDiscrete%s%s/></DerivedField>",
    attribute("name", name), attribute("field", piece$field), attribute("value", piece$level))
  name
}
call_field <- function(piece) {
  functions <- c(log = "ln", sqrt = "sqrt", exp = "exp")
  derived[[piece$field]] <- sprintf(
    "   <DerivedField%s optype=\"continuous\" dataType=\"double\"><Apply%s><FieldRef%s/></Apply></DerivedField>",
    attribute("name", piece$field), attribute("function", functions[[piece$call]]), attribute("field", piece$of))
  piece$field
}

predictor <- function(name, coefficient, data) {
  pieces <- pieces_of(name, data)
  if (length(pieces) == 1) {
    piece <- pieces[[1]]
    if (!is.null(piece$level)) {
      return(sprintf("    <CategoricalPredictor%s%s%s/>", attribute("name", piece$field),
                     attribute("value", piece$level), attribute("coefficient", digits(coefficient))))
    }
    field <- if (is.null(piece$call)) piece$field else call_field(piece)
    exponent <- if (piece$exponent == 1) "" else attribute("exponent", piece$exponent)
    return(sprintf("    <NumericPredictor%s%s%s/>", attribute("name", field), exponent,
                   attribute("coefficient", digits(coefficient))))
  }
  references <- unlist(lapply(pieces, function(piece) {
    if (!is.null(piece$level)) return(indicator(piece))
    rep(if (is.null(piece$call)) piece$field else call_field(piece), piece$exponent)
  }))
  sprintf("    <PredictorTerm%s>%s</PredictorTerm>", attribute("coefficient", digits(coefficient)),
          paste0("<FieldRef", attribute("field", references), "/>", collapse = ""))
}

# A table of named coefficients; one that R couldn't estimate is left out.
equation <- function(coefficients, data, category = NULL, intercept = TRUE) {
  coefficients <- coefficients[!is.na(coefficients)]
  constant <- if ("(Intercept)" %in% names(coefficients)) coefficients[["(Intercept)"]] else 0
  slopes <- coefficients[names(coefficients) != "(Intercept)"]
  head <- paste0("   <RegressionTable", if (intercept) attribute("intercept", digits(constant)),
                 if (!is.null(category)) attribute("targetCategory", category))
  if (!length(slopes)) return(paste0(head, "/>"))
  rows <- mapply(predictor, names(slopes), slopes, MoreArgs = list(data = data), USE.NAMES = FALSE)
  paste(c(paste0(head, ">"), rows, "   </RegressionTable>"), collapse = "\n")
}

data_field <- function(name, column, optype) {
  if (is.numeric(column)) {
    type <- if (is.integer(column)) "integer" else "double"
    return(sprintf("  <DataField%s optype=\"continuous\" dataType=\"%s\"/>", attribute("name", name), type))
  }
  values <- if (is.logical(column)) c("false", "true") else levels(column)
  sprintf("  <DataField%s optype=\"%s\" dataType=\"%s\">\n%s\n  </DataField>", attribute("name", name), optype,
          if (is.logical(column)) "boolean" else "string",
          paste0("   <Value", attribute("value", values), "/>", collapse = "\n"))
}

write_csv <- function(table, file) {
  for (name in names(table)) {
    if (is.double(table[[name]])) table[[name]] <- ifelse(is.na(table[[name]]), NA, digits(table[[name]]))
    if (is.logical(table[[name]])) table[[name]] <- tolower(as.character(table[[name]]))
  }
  quoted <- function(x) {
    x <- ifelse(is.na(x), "", as.character(x))
    ifelse(grepl("[\",]", x), paste0("\"", gsub("\"", "\"\"", x), "\""), x)
  }
  lines <- c(paste(quoted(names(table)), collapse = ","),
             do.call(paste, c(lapply(table, quoted), sep = ",")))
  writeLines(lines, file)
}

# `tables` is the text of the RegressionTables, `target` the column's name in `data`, `expected` a
# data frame for the rows of `input`.
save_model <- function(name, data, target, inputs, tables, normalization, expected, dataset, notes = "",
                       version = "4.4", classification = FALSE, optype = "categorical", old = FALSE) {
  force(tables)  # which makes the derived fields
  into <- file.path(folder, name)
  dir.create(into, showWarnings = FALSE)
  fields <- c(target, inputs)
  dictionary <- vapply(fields, function(field) {
    data_field(field, data[[field]], if (field == target) optype else "categorical")
  }, "")
  mining <- vapply(fields, function(field) {
    sprintf("   <MiningField%s usageType=\"%s\"/>", attribute("name", field),
            if (field != target) "active" else if (old) "predicted" else "target")
  }, "")
  local <- mget(ls(derived), derived)
  rm(list = ls(derived), envir = derived)
  lines <- c(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
    sprintf("<PMML version=\"%s\" xmlns=\"http://www.dmg.org/PMML-%s\">", version,
            sub("\\.", "_", substr(version, 1, 3))),
    " <Header copyright=\"none\"><Application name=\"R\" version=\"4.2.2\"/></Header>",
    sprintf(" <DataDictionary numberOfFields=\"%d\">", length(fields)), dictionary, " </DataDictionary>",
    sprintf(" <RegressionModel modelName=\"%s\" functionName=\"%s\"%s%s>", name,
            if (classification && !old) "classification" else "regression",
            if (normalization == "none") "" else attribute("normalizationMethod", normalization),
            if (old) attribute("targetFieldName", target) else ""),
    "  <MiningSchema>", mining, "  </MiningSchema>",
    if (length(local)) c("  <LocalTransformations>", unlist(local), "  </LocalTransformations>"),
    tables, " </RegressionModel>", "</PMML>")
  writeLines(lines, file.path(into, "model.pmml"))
  rows <- rows_of(data)
  write_csv(data[rows, inputs, drop = FALSE], file.path(into, "input.csv"))
  write_csv(expected, file.path(into, "expected.csv"))
  writeLines(c("{", sprintf("  \"name\": \"%s\",", name),
               "  \"produced_by\": \"r_models.R: its exporter, from an R fit\",",
               sprintf("  \"dataset\": \"%s\",", dataset), sprintf("  \"rows\": %d,", length(rows)),
               "  \"tolerance\": 1e-12,", sprintf("  \"notes\": \"%s\"", notes), "}"),
             file.path(into, "case.json"))
  cat(name, "\n")
}
rows_of <- function(data) {
  step <- max(1, nrow(data) %/% most_rows)
  head(seq(1, nrow(data), by = step), most_rows)
}

number <- function(fit, data, ...) {
  data.frame(prediction = unname(predict(fit, data[rows_of(data), , drop = FALSE], ...)))
}
probabilities <- function(p) {
  p <- as.data.frame(p, check.names = FALSE)
  best <- names(p)[apply(p, 1, which.max)]
  names(p) <- paste0("probability(", names(p), ")")
  cbind(data.frame(prediction = best), p)
}
two <- function(fit, data, other, event) {
  p <- predict(fit, data[rows_of(data), , drop = FALSE], type = "response")
  probabilities(setNames(data.frame(1 - p, p), c(other, event)))
}

# Numbers.

fit <- lm(mpg ~ wt + I(wt^2) + hp + log(disp), mtcars)
save_model("r-lm-mtcars", mtcars, "mpg", c("wt", "hp", "disp"), equation(coef(fit), mtcars), "none",
           number(fit, mtcars), "datasets::mtcars", "a square, a derived logarithm", version = "4.1")

fit <- lm(breaks ~ wool * tension, warpbreaks)
save_model("r-lm-warpbreaks", warpbreaks, "breaks", c("wool", "tension"), equation(coef(fit), warpbreaks), "none",
           number(fit, warpbreaks), "datasets::warpbreaks", "products of two factors' levels")

fit <- lm(len ~ supp * dose + I(dose^2):supp - 1, ToothGrowth)
save_model("r-lm-toothgrowth", ToothGrowth, "len", c("supp", "dose"),
           equation(coef(fit), ToothGrowth, intercept = FALSE), "none", number(fit, ToothGrowth),
           "datasets::ToothGrowth", "no intercept; a square times a level is a field twice in a term")

odd <- setNames(iris[c("Sepal.Length", "Petal.Length", "Petal.Width", "Species")],
                c("sepal length", "petal \"long\"/(cm)", "petal:width^1", "the species, named"))
fit <- lm(`sepal length` ~ `petal "long"/(cm)` + `petal:width^1` + `the species, named`, odd)
slopes <- coef(fit)
names(slopes) <- gsub("`", "", names(slopes), fixed = TRUE)
tables <- c(
  sprintf("   <RegressionTable intercept=\"%s\">", digits(slopes[[1]])),
  sprintf("    <NumericPredictor%s%s/>", attribute("name", names(odd)[2:3]),
          attribute("coefficient", digits(slopes[2:3]))),
  sprintf("    <CategoricalPredictor%s%s%s/>", attribute("name", names(odd)[4]),
          attribute("value", levels(iris$Species)[2:3]), attribute("coefficient", digits(slopes[4:5]))),
  "   </RegressionTable>")
save_model("r-lm-odd-names-iris", odd, "sepal length", names(odd)[2:4], tables, "none", number(fit, odd),
           "datasets::iris", "names with blanks, quotes, slashes, colons, commas")

fit <- glm(count ~ spray, poisson, InsectSprays)
save_model("r-glm-poisson-insectsprays", InsectSprays, "count", "spray", equation(coef(fit), InsectSprays), "exp",
           number(fit, InsectSprays, type = "response"), "datasets::InsectSprays", "normalization exp", version = "4.3")

budworm <- data.frame(ldose = rep(0:5, 2), dead = c(1, 4, 9, 13, 18, 20, 0, 2, 6, 10, 12, 16) / 20,
                      sex = factor(rep(c("M", "F"), each = 6)))
for (link in c("logit", "probit", "cloglog")) {
  fit <- suppressWarnings(glm(dead ~ sex * ldose, binomial(link), budworm, weights = rep(20, 12)))
  save_model(paste0("r-glm-share-", link, "-budworm"), budworm, "dead", c("sex", "ldose"),
             equation(coef(fit), budworm), link, number(fit, budworm, type = "response"),
             "MASS: the tobacco budworms of its chapter 7", "a share as a regression")
}

# Two categories.

births <- within(MASS::birthwt, {
  weight_class <- factor(low, labels = c("normal", "low"))
  race <- factor(race, labels = c("white", "black", "other"))
  smoke <- smoke == 1
})
binary <- function(name, formula, link, normalization, inputs, ...) {
  fit <- glm(formula, binomial(link), births)
  tables <- c(equation(coef(fit), births, "low"), equation(c("(Intercept)" = 0), births, "normal"))
  save_model(name, births, "weight_class", inputs, tables, normalization, two(fit, births, "normal", "low"),
             "MASS::birthwt", classification = TRUE, ...)
}
binary("r-glm-logit-birthwt", weight_class ~ age + race + smoke, "logit", "logit", c("age", "race", "smoke"),
       notes = "the event's table first, a boolean among the predictors")
binary("r-glm-softmax-birthwt", weight_class ~ lwt + race * smoke, "logit", "softmax", c("lwt", "race", "smoke"),
       notes = "softmax over two tables, functionName regression, targetFieldName", version = "3.2", old = TRUE)
binary("r-glm-probit-birthwt", weight_class ~ age + lwt + ptl, "probit", "probit", c("age", "lwt", "ptl"),
       notes = "probit of two categories")
binary("r-glm-cloglog-birthwt", weight_class ~ lwt + race, "cloglog", "cloglog", c("lwt", "race"),
       notes = "complementary log-log of two categories", version = "4.2")

# More categories.

library(nnet)
fit <- multinom(Species ~ Sepal.Length + I(Sepal.Width^2), iris, trace = FALSE, maxit = 500)
tables <- c(equation(c("(Intercept)" = 0), iris, "setosa", intercept = FALSE),
            vapply(rownames(coef(fit)), function(row) equation(coef(fit)[row, ], iris, row), ""))
save_model("r-multinom-iris", iris, "Species", c("Sepal.Length", "Sepal.Width"), tables, "softmax",
           probabilities(predict(fit, iris[rows_of(iris), ], type = "probs")), "datasets::iris",
           "an empty table without intercept, a square", classification = TRUE)

housing <- MASS::housing
plain <- transform(housing, Sat = factor(Sat, ordered = FALSE))
fit <- multinom(Sat ~ Infl + Type + Cont, plain, weights = Freq, trace = FALSE, maxit = 500)
tables <- rev(c(equation(c("(Intercept)" = 0), plain, "Low"),
                vapply(rownames(coef(fit)), function(row) equation(coef(fit)[row, ], plain, row), "")))
save_model("r-multinom-housing", plain, "Sat", c("Infl", "Type", "Cont"), tables, "softmax",
           probabilities(predict(fit, plain[rows_of(plain), ], type = "probs")), "MASS::housing",
           "tables in another order than the dictionary", classification = TRUE)

# Ordered categories. polr's equation is subtracted from the thresholds; its loglog is that of the
# standard, and its cloglog too.
for (method in c(logit = "logistic", probit = "probit", cloglog = "cloglog", loglog = "loglog", cauchit = "cauchit")) {
  normalization <- if (method == "logistic") "logit" else method
  logistic <- MASS::polr(Sat ~ Infl + Type + Cont, housing, weights = Freq)
  fit <- MASS::polr(Sat ~ Infl + Type + Cont, housing, weights = Freq, method = method,
                    start = c(coef(logistic), logistic$zeta))
  tables <- vapply(levels(housing$Sat), function(category) {
    position <- match(category, levels(housing$Sat))
    if (position == nlevels(housing$Sat)) return(equation(c("(Intercept)" = 0), housing, category))
    equation(c("(Intercept)" = unname(fit$zeta[position]), -coef(fit)), housing, category)
  }, "")
  save_model(paste0("r-polr-", normalization, "-housing"), housing, "Sat", c("Infl", "Type", "Cont"), tables,
             normalization, probabilities(predict(fit, housing[rows_of(housing), ], type = "probs")),
             "MASS::housing", "ordered categories", classification = TRUE, optype = "ordinal",
             version = if (method == "probit") "4.4.1" else "4.4")
}
