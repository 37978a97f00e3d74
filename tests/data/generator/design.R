# From the design of a fit to the parameters of a document.

# The pieces of a term's variable: for a covariate its power, for a factor a level each column. `coding` holds
# the contrast matrices that the document is to show; a column of one is named by the level in the same place.
variable_pieces <- function(variable, fit, coding, full) {
  levels <- fit$xlevels[[variable]]
  if (is.null(levels)) {
    power <- regmatches(variable, regexec("^I\\((.+)\\^([0-9]+)\\)$", variable))[[1]]
    if (!length(power)) power <- c(NA, variable, "1")
    return(list(list(predictor = power[2], value = power[3], label = variable)))
  }
  matrix <- coding[[variable]]
  shown <- if (full) levels else if (is.null(matrix)) levels[-1] else levels[seq_len(ncol(matrix))]
  suffix <- if (is.null(matrix)) shown else if (is.null(colnames(matrix))) seq_along(shown) else colnames(matrix)
  Map(function(level, end) list(predictor = variable, value = level, label = paste0(variable, end)), shown, suffix,
      USE.NAMES = FALSE)
}

# The contrast matrices that a fit used, by factor.
contrast_matrices <- function(fit) {
  sapply(names(fit$contrasts), function(factor) {
    levels <- fit$xlevels[[factor]]
    matrix <- get(fit$contrasts[[factor]])(levels)
    rownames(matrix) <- levels
    matrix
  }, simplify = FALSE)
}

# The parameters of a fit, in the order of its coefficients, without names of their own.
design_parameters <- function(fit, intercept = "Intercept", coding = list()) {
  terms <- terms(fit)
  factors <- attr(terms, "factors")
  of_term <- function(term) {
    variables <- rownames(factors)[factors[, term] > 0]
    pieces <- lapply(variables, function(v) {
      variable_pieces(v, fit, coding, full = factors[v, term] == 2 || !has_reference(terms, term))
    })
    picks <- expand.grid(lapply(pieces, seq_along))  # the first variable runs fastest
    lapply(seq_len(nrow(picks)), function(row) {
      chosen <- Map(function(piece, i) piece[[i]], pieces, picks[row, ])
      list(label = paste(vapply(chosen, `[[`, "", "label"), collapse = ":"), term = term,
           cells = lapply(unname(chosen), `[`, c("predictor", "value")))
    })
  }
  labels <- grep("^strata\\(", attr(terms, "term.labels"), value = TRUE, invert = TRUE)
  c(if (!is.null(intercept) && attr(terms, "intercept")) list(list(label = intercept, cells = list())),
    unlist(lapply(labels, of_term), recursive = FALSE))
}

# Without an intercept the first factor has a parameter for every level.
has_reference <- function(terms, term) attr(terms, "intercept") == 1 || term != attr(terms, "term.labels")[1]

with_names <- function(parameters, names) Map(function(p, name) c(list(name = name), p), parameters, names)
counted <- function(parameters) with_names(parameters, paste0("p", seq_along(parameters) - 1))
names_of <- function(parameters) vapply(parameters, `[[`, "", "name")

# A parameter for the reference level of a factor, after those of its other levels.
add_aliased <- function(parameters, name, factor, level) {
  aliased <- list(name = name, label = sprintf("[%s=%s]", factor, level), aliased = TRUE,
                  cells = list(list(predictor = factor, value = level)))
  own <- vapply(parameters, function(p) identical(p$term, factor), NA)
  append(parameters, list(aliased), max(which(own)))
}
is_aliased <- function(parameters) vapply(parameters, function(p) isTRUE(p$aliased), NA)

# The predictors of the parameters, in the order in which they first stand in the model.
predictors_of <- function(parameters) unique(each(parameters, function(p) each(p$cells, `[[`, "predictor")))
