# From a fit to the three files of a folder. Each function here answers list(document, table, expected): lines of
# text and two data frames.

# Of the rows that differ in some columns so many, spread evenly; their inputs.
rows_of <- function(data, inputs, most = 120, differ_in = inputs) {
  rows <- data[!duplicated(data[differ_in]), inputs, drop = FALSE]
  rows[round(seq(1, nrow(rows), length.out = min(most, nrow(rows)))), , drop = FALSE]
}

# The rows with fields made empty: numbers of rows by column.
with_blanks <- function(rows, blanks) {
  for (column in names(blanks)) rows[blanks[[column]], column] <- NA
  rows
}

# The rows as a model sees them whose mining schema replaces what is missing.
with_replacements <- function(rows, special) {
  for (column in names(special)) {
    value <- special[[column]]$missingValueReplacement
    rows[[column]][is.na(rows[[column]])] <- if (is.factor(rows[[column]])) value else as.numeric(value)
  }
  rows
}
replacements <- function(...) lapply(list(...), function(value) list(missingValueReplacement = value))

input_fields <- function(data, inputs, integers) {
  lapply(inputs, function(name) field(name, data[[name]], integers))
}

# What every model of the published form holds of its design.
design_sections <- function(parameters, data, coding = list(), type = NULL, listed = TRUE, cells = TRUE) {
  predictors <- predictors_of(parameters)
  is_factor <- vapply(data[predictors], is.factor, NA)
  list(parameters = parameter_list(parameters),
       predictors = predictor_lists(predictors[is_factor], predictors[!is_factor], coding, type, listed),
       cells = if (cells) pp_matrix(parameters) else element("PPMatrix"))
}

# The parameters with a beta, the aliased ones last and 0.
betas <- function(parameters, values, target = NULL) {
  names <- names_of(parameters)
  aliased <- is_aliased(parameters)
  c(each(seq_along(values), function(i) pcell(names[!aliased][i], values[[i]], target = target)),
    each(names[aliased], function(name) pcell(name, 0, df = 0, target = target)))
}

estimable <- function(parameters) names_of(parameters)[!is_aliased(parameters)]

limits <- function(centre, margin) list(ci_lower = centre - margin, ci_upper = centre + margin)

# --- linear and general linear models ---

linear_expected <- function(fit, rows) {
  p <- predict(fit, rows, se.fit = TRUE)
  margin <- qt(0.975, fit$df.residual) * p$se.fit
  data.frame(prediction = p$fit, std_dev = p$se.fit, limits(p$fit, margin))
}

# `scored` are the rows as the model sees them, where that differs from `rows`.
linear_case <- function(fit, data, rows = rows_of(data, inputs), scored = with_replacements(rows, special),
                        integers = character(), special = list(), general = FALSE, constant = "first", cells = TRUE, aliased = NULL,
                        description = if (general) "General linear model" else "Linear regression") {
  inputs <- inputs_of(fit)
  target <- all.vars(formula(fit))[1]
  covariances <- unname(vcov(fit))
  values <- unname(coef(fit))
  if (general) {
    parameters <- counted(design_parameters(fit))
    if (!is.null(aliased)) parameters <- do.call(add_aliased, c(list(parameters), aliased))
  } else {
    parameters <- design_parameters(fit, "Constant")
    labels <- vapply(parameters, `[[`, "", "label")
    parameters <- with_names(parameters, ifelse(labels == "Constant", "(Constant)", paste0("b_", labels)))
    if (constant == "last") {
      order <- c(seq_along(values)[-1], 1)
      parameters <- parameters[order]
      values <- values[order]
      covariances <- covariances[order, order]
    }
  }
  design <- design_sections(parameters, data, cells = cells)
  model <- element("GeneralRegressionModel", modelType = if (general) "generalLinear" else "regression",
                   functionName = "regression", modelDF = fit$df.residual, inside = c(
    mining_schema(target, inputs, special), design$parameters, design$predictors, design$cells,
    pcov_matrix(estimable(parameters), covariances),
    element("ParamMatrix", inside = betas(parameters, values))))
  fields <- c(list(field(target, data[[target]], integers)), input_fields(data, inputs, integers))
  list(document = pmml(description, fields, model), table = rows, expected = linear_expected(fit, scored))
}

# The variables of the right side, in the order in which the formula names them.
inputs_of <- function(fit) all.vars(delete.response(terms(fit)))

# --- generalized linear models ---

# A fit's inverse link at the linear predictor and at its 95% limits, the lower one first; `trials` turns shares
# into counts. A limit that the link has no value for is missing.
generalized_expected <- function(fit, rows, trials = 1) {
  p <- predict(fit, rows, type = "link", se.fit = TRUE)
  inverse <- function(eta) suppressWarnings(fit$family$linkinv(eta)) * trials
  margin <- qnorm(0.975) * p$se.fit
  falls <- any(fit$family$mu.eta(p$fit) < 0, na.rm = TRUE)
  ends <- lapply(limits(p$fit, if (falls) -margin else margin), inverse)
  data.frame(prediction = inverse(p$fit), std_dev = p$se.fit, ends)
}

# From the second category's probability on which the prediction is that.
binary_expected <- function(share, levels, cutoff = 0.5) {
  expected <- data.frame(ifelse(share > cutoff, levels[2], levels[1]), 1 - share, share)
  names(expected) <- c("prediction", sprintf("probability(%s)", levels))
  expected
}

# `link` is what the document says of distribution and link; `options` are further attributes of the model.
generalized_case <- function(fit, data, distribution, link, target = all.vars(formula(fit))[1], inputs = inputs_of(fit),
                             rows = rows_of(data, inputs), scored = with_replacements(rows, special),
                             integers = character(), special = list(), link_parameter = NULL, offset = NULL, trials = NULL, trials_value = NULL,
                             dist_parameter = NULL, selector = "modelName", type = "generalizedLinear", version = "4.4",
                             verification = NULL, classes = NULL, description = "Generalized linear model") {
  parameters <- counted(design_parameters(fit))
  extra <- c(offset, trials)
  design <- design_sections(parameters, data)
  choice <- list(distribution = distribution, linkFunction = link, linkParameter = link_parameter,
                 offsetVariable = offset, trialsVariable = trials, trialsValue = trials_value,
                 distParameter = dist_parameter)
  old <- version == "3.2"
  attributes <- c(
    if (old) list(targetVariableName = target), list(modelType = type),
    setNames(list("GZLM"), selector),
    list(functionName = if (is.null(classes)) "regression" else "classification"), if (!old) choice)
  model <- do.call(element, c(list("GeneralRegressionModel"), attributes, list(inside = c(
    if (old) each(names(Filter(Negate(is.null), choice)), function(name) extension(name, value = choice[[name]])),
    mining_schema(target, c(inputs, setdiff(extra, inputs)), special, if (old) "predicted" else "target"),
    design$parameters, design$predictors, design$cells,
    if (is.null(classes)) pcov_matrix(names_of(parameters), vcov(fit)),
    element("ParamMatrix", inside = betas(parameters, coef(fit), classes[2])),
    verification))))
  fields <- c(list(field(target, if (!is.null(classes)) factor(classes, classes), integers)),
              input_fields(data, inputs, integers))
  expected <- if (is.null(classes)) {
    counts <- if (!is.null(trials)) scored[[trials]] else if (is.null(trials_value)) 1 else trials_value
    generalized_expected(fit, scored, counts)
  } else {
    binary_expected(predict(fit, scored, type = "response"), classes)
  }
  list(document = pmml(description, fields, model, version), table = rows, expected = expected)
}

# --- logistic models ---

# Binary logistic regression in a document that shows the contrast matrices.
contrast_case <- function(fit, data, classes, type, listed = TRUE, covariances = TRUE, integers = character(),
                          cutoff = NULL, rows = rows_of(data, inputs_of(fit))) {
  coding <- contrast_matrices(fit)
  parameters <- counted(design_parameters(fit, coding = coding))
  inputs <- inputs_of(fit)
  target <- all.vars(formula(fit))[1]
  design <- design_sections(parameters, data, coding, type, listed)
  model <- element("GeneralRegressionModel", modelType = "multinomialLogistic", modelName = "contrastLogistic",
                   functionName = "classification", targetReferenceCategory = classes[2], inside = c(
    if (!is.null(cutoff)) extension("cutoff", value = cutoff),
    mining_schema(target, inputs), design$parameters, design$predictors, design$cells,
    if (covariances) pcov_matrix(names_of(parameters), vcov(fit)),
    element("ParamMatrix", inside = betas(parameters, coef(fit), classes[2]))))
  fields <- c(list(field(target, factor(classes, classes))), input_fields(data, inputs, integers))
  share <- predict(fit, rows, type = "response")
  list(document = pmml("Binary logistic regression with contrasts", fields, model), table = rows,
       expected = binary_expected(share, classes, if (is.null(cutoff)) 0.5 else cutoff))
}

# The most probable category, and the probabilities of all.
category_expected <- function(probabilities) {
  expected <- data.frame(colnames(probabilities)[max.col(ifelse(is.na(probabilities), 0, probabilities), "first")],
                         probabilities)
  names(expected) <- c("prediction", sprintf("probability(%s)", colnames(probabilities)))
  expected[is.na(probabilities[, 1]), "prediction"] <- NA
  expected
}

# The cells of a covariance matrix whose rows are categories by parameters; below the diagonal alone.
category_pcov_matrix <- function(names, categories, covariances) {
  grid <- expand.grid(parameter = names, category = categories, stringsAsFactors = FALSE)
  element("PCovMatrix", type = "model", inside = each(seq_len(nrow(grid)), function(i) {
    element_each("PCovCell", pRow = grid$parameter[i], pCol = grid$parameter[1:i], tRow = grid$category[i],
                 tCol = grid$category[1:i], value = covariances[i, 1:i])
  }))
}

multinomial_case <- function(fit, data, rows = rows_of(data, inputs_of(fit)), integers = character(), special = list(),
                             covariances = FALSE, reference = TRUE, intercept = "Intercept", extensions = NULL,
                             probabilities = predict(fit, with_replacements(rows, special), type = "probs"),
                             description = "Multinomial logistic regression") {
  parameters <- counted(design_parameters(fit, intercept))
  inputs <- inputs_of(fit)
  target <- all.vars(formula(fit))[1]
  design <- design_sections(parameters, data)
  categories <- fit$lev
  model <- element("GeneralRegressionModel", modelType = "multinomialLogistic", functionName = "classification",
                   targetReferenceCategory = if (reference) categories[1], inside = c(
    extensions, mining_schema(target, inputs, special), design$parameters, design$predictors, design$cells,
    if (covariances) category_pcov_matrix(names_of(parameters), categories[-1], vcov(fit)),
    element("ParamMatrix", inside = each(categories[-1], function(category) {
      betas(parameters, coef(fit)[category, ], category)
    }))))
  fields <- c(list(field(target, factor(categories, categories), integers)), input_fields(data, inputs, integers))
  list(document = pmml(description, fields, model), table = rows, expected = category_expected(probabilities))
}

# The probability of the first category, in a model that has a linear predictor of 0 for the other.
conditional_case <- function(fit, data, target, classes, integers) {
  parameters <- design_parameters(fit, NULL)
  parameters <- with_names(parameters, paste0("b", seq_along(parameters)))
  inputs <- predictors_of(parameters)
  design <- design_sections(parameters, data)
  model <- element("GeneralRegressionModel", modelType = "multinomialLogistic", algorithmName = "conditionalLogistic",
                   functionName = "classification", inside = c(
    mining_schema(target, inputs), design$parameters, design$predictors, design$cells,
    element("ParamMatrix", inside = betas(parameters, coef(fit), classes[1]))))
  rows <- rows_of(data, inputs)
  fields <- c(list(field(target, factor(classes, classes))), input_fields(data, inputs, integers))
  list(document = pmml("Conditional logistic regression", fields, model), table = rows,
       expected = data.frame(prediction = plogis(as.matrix(rows) %*% coef(fit))))
}

# --- ordinal models ---

# R has the thresholds last, the document first: cells of the first parameter, by category. `sign` is that of the
# document's slopes.
threshold_pcov_matrix <- function(names, categories, sign, covariances) {
  slopes <- seq_along(names[-1])
  order <- c(length(slopes) + seq_along(categories), slopes)
  signs <- rep(c(1, sign), c(length(categories), length(slopes)))
  covariances <- covariances[order, order] * outer(signs, signs)
  parameters <- c(rep(names[1], length(categories)), names[-1])
  targets <- c(categories, rep(NA, length(slopes)))
  element("PCovMatrix", type = "model", inside = each(seq_along(parameters), function(i) {
    each(1:i, function(j) {
      element("PCovCell", pRow = parameters[i], pCol = parameters[j], tRow = if (!is.na(targets[i])) targets[i],
              tCol = if (!is.na(targets[j])) targets[j], value = covariances[i, j])
    })
  }))
}

# Class probabilities from R's own form: inverse link of threshold minus linear predictor. The document's betas are
# the same in the generalized form and the negatives of R's in the other, and where R's name of a link means its
# mirror image, the document has the other name.
ordinal_case <- function(fit, data, link, generalized = FALSE, link_function = !generalized, integers = character(),
                         covariances = FALSE, rows = rows_of(data, inputs_of(fit))) {
  parameters <- counted(design_parameters(fit))
  inputs <- inputs_of(fit)
  target <- all.vars(formula(fit))[1]
  design <- design_sections(parameters, data)
  thresholds <- each(seq_along(fit$zeta), function(i) {
    pcell(parameters[[1]]$name, fit$zeta[[i]], target = fit$lev[i])
  })
  sign <- if (generalized) 1 else -1
  model <- element("GeneralRegressionModel", modelType = "ordinalMultinomial", modelName = if (generalized) "GZLM",
                   functionName = "classification", cumulativeLink = link, linkFunction = if (link_function) link,
                   inside = c(
    mining_schema(target, inputs), design$parameters, design$predictors, design$cells,
    if (covariances) threshold_pcov_matrix(names_of(parameters), fit$lev[seq_along(fit$zeta)], sign, vcov(fit)),
    element("ParamMatrix", inside = c(thresholds, betas(parameters[-1], sign * coef(fit))))))
  fields <- c(list(field(target, factor(fit$lev, fit$lev), integers, ordered = TRUE)),
              input_fields(data, inputs, integers))
  list(document = pmml("Ordinal regression", fields, model), table = rows,
       expected = category_expected(predict(fit, rows, type = "probs")))
}

# --- the older form ---

old_variable <- function(field) {
  element("variable", name = field$name, "storage-type" = if (field$type == "string") "STRING" else "NUMERIC",
          "measurement-level" = if (is.null(field$levels)) "CONTINUOUS" else "NOMINAL",
          inside = section("categories", inside = each(field$levels, function(level) {
            element("category", value = level)
          })))
}
old_list <- function(tag, one, names) section(tag, inside = each(names, function(name) element(one, name = name)))
old_cells <- function(parameters, values, target = NULL) {
  each(seq_along(values), function(i) {
    element("p-cell", "target-category" = target, "parameter-name" = parameters[[i]]$label, beta = values[[i]], df = 1)
  })
}
old_document <- function(fields, parameters, data, cells, covariances = NULL, ...) {
  predictors <- predictors_of(parameters)
  is_factor <- vapply(data[predictors], is.factor, NA)
  names <- vapply(parameters, `[[`, "", "label")
  c(declaration, element("zelt-ml", version = "1.0", inside = c(
    element("dictionary", inside = each(fields, old_variable)),
    element("model", inside = element("regression-model", "target-variable-name" = fields[[1]]$name, ..., inside = c(
      old_list("parameter-list", "parameter", names),
      old_list("factor-list", "predictor", predictors[is_factor]),
      old_list("covariate-list", "predictor", predictors[!is_factor]),
      element("p-table", inside = cells),
      element("pp-matrix", inside = each(parameters, function(p) each(p$cells, function(cell) {
        element("pp-cell", "parameter-name" = p$label, "predictor-name" = cell$predictor, value = cell$value)
      }))),
      section("pcov-matrix", inside = if (!is.null(covariances)) each(seq_along(names), function(i) {
        element_each("pcov-cell", "p-row" = names[i], "p-col" = names[1:i], value = covariances[i, 1:i])
      }))))))))
}

# --- Cox models ---

# The cumulative hazard of rows that are at the reference point, of each stratum: at the times of events, or also at
# those at which a case left without one.
baseline_of <- function(fit, reference, events_alone) {
  # R warns that the curve at the means says little of a model with interactions, or that it drops contrasts of the
  # data, which the fit remembers; here only the curve at 0 counts.
  curve <- suppressWarnings(survfit(fit, se.fit = FALSE))
  zero <- suppressWarnings(basehaz(fit, centered = FALSE)$hazard)
  stratum <- if (is.null(curve$strata)) rep("", length(curve$time)) else
    rep(sub("^.*=", "", names(curve$strata)), curve$strata)
  table <- data.frame(stratum, time = curve$time, events = curve$n.event,
                      hazard = zero * exp(sum(reference * coef(fit))))
  lapply(split(table, factor(stratum, unique(stratum))), function(one) {
    list(last = max(one$time), cells = one[one$events > 0 | !events_alone, ])
  })
}

# The cumulative hazard of each row at its own time, read off the curve that R makes for it; past the last time of its
# stratum there is none.
survival_expected <- function(fit, rows, times) {
  usable <- stats::complete.cases(rows, times)
  hazard <- rep(NA_real_, nrow(rows))
  hazard[usable] <- vapply(which(usable), function(i) {
    curve <- survfit(fit, newdata = rows[i, , drop = FALSE], se.fit = FALSE)
    if (times[i] > max(curve$time)) return(NA_real_)
    c(0, curve$cumhaz)[findInterval(times[i], curve$time) + 1]
  }, 0)
  data.frame(prediction = exp(-hazard), cum_hazard = hazard)
}

baseline_tables <- function(baselines, strata) {
  if (is.null(strata)) {
    return(element("BaseCumHazardTables", maxTime = baselines[[1]]$last, inside = baseline_cells(baselines[[1]]$cells)))
  }
  element("BaseCumHazardTables", inside = each(names(baselines), function(value) {
    element("BaselineStratum", value = value, label = sprintf("[%s=%s]", strata, value),
            maxTime = baselines[[value]]$last, inside = baseline_cells(baselines[[value]]$cells))
  }))
}

# What version 3.2 says of times, reference points and baseline in extensions.
old_cox_extensions <- function(end, parameters, baseline) {
  c(extension("endTimeVariable", value = end),
    extension("referencePoint", inside = each(parameters, function(p) {
      element("X-BasePoint", parameterName = p$name, value = p$reference)
    })),
    extension("X-BaseCumHazardTables", inside = c(
      element("X-BaseMaxTime", value = baseline$last),
      element("X-BaseCumHazardTable", inside = {
        element_each("X-Baseline", time = baseline$cells$time, cumHazard = baseline$cells$hazard)
      }))))
}

# `centred` writes the means of the design's columns as reference points; `event_field` is the status as the document
# calls it, `scoring` a fit of the same model in another coding.
cox_case <- function(fit, data, times, event_field, centred = TRUE, coding = list(), strata = NULL, aliased = NULL,
                     integers = character(), special = list(), rows = NULL, short = FALSE, events_alone = FALSE,
                     covariances = FALSE, version = "4.4", scoring = fit, description = "Cox regression") {
  parameters <- design_parameters(fit, NULL, coding)
  own <- if (short) "b%d" else "P%07d"
  parameters <- with_names(parameters, sprintf(own, seq_along(parameters)))
  reference <- if (centred) suppressWarnings(colMeans(model.matrix(fit))) else 0 * coef(fit)
  if (centred) parameters <- Map(function(p, point) c(p, list(reference = point)), parameters, reference)
  if (!is.null(aliased)) parameters <- do.call(add_aliased, c(list(parameters), aliased))
  covariates <- all.vars(delete.response(terms(fit)))
  inputs <- c(times, covariates)
  if (is.null(rows)) rows <- rows_of(data, c(inputs, if (!short) event_field))
  baselines <- baseline_of(fit, reference, events_alone)
  design <- design_sections(parameters, data, coding, "mixed")
  old <- version == "3.2"
  end <- times[1]
  attributes <- if (old) {
    list(targetVariableName = event_field, modelType = "generalLinear", modelName = "Cox", functionName = "regression")
  } else {
    list(modelType = "CoxRegression", modelName = "Cox", functionName = "regression",
         startTimeVariable = if (length(times) > 1) times[2], endTimeVariable = end, statusVariable = event_field,
         baselineStrataVariable = strata)
  }
  model <- do.call(element, c(list("GeneralRegressionModel"), attributes, list(inside = c(
    if (old) old_cox_extensions(end, parameters, baselines[[1]]),
    mining_schema(event_field, inputs, special, if (old) "predicted" else "target"),
    if (old) parameter_list(lapply(parameters, `[<-`, "reference", NULL)) else design$parameters,
    design$predictors, design$cells,
    if (covariances) pcov_matrix(estimable(parameters), vcov(fit)),
    element("ParamMatrix", inside = betas(parameters, coef(fit))),
    if (!old && !short) element("EventValues", inside = element("Value", value = "1")),
    if (!old) baseline_tables(baselines, strata)))))
  fields <- c(input_fields(data, inputs, integers), list(field(event_field, NULL)))
  scored <- with_replacements(rows, special)
  list(document = pmml(description, fields, model, version), table = rows,
       expected = survival_expected(scoring, scored[covariates], scored[[end]]))
}

# --- documents that an exporter wrote ---

# The document stays as it is kept: it is the exporter's. Its model is fitted here once more, and the expected numbers
# are R's for that fit.
published_case <- function(folder, rows, expected) {
  list(document = readLines(file.path(kept, folder, "model.pmml"), encoding = "UTF-8"), table = rows,
       expected = expected)
}
