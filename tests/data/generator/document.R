# The pieces of documents, as lines of text.

# The shortest of 15 and 17 digits that reads back as the same double.
number <- function(x) {
  if (is.integer(x) || is.character(x)) return(as.character(x))
  short <- sprintf("%.15g", x)
  ifelse(is.na(x) | suppressWarnings(as.numeric(short)) == x, short, sprintf("%.17g", x))
}

escape <- function(text) {
  for (each in list(c("&", "&amp;"), c("<", "&lt;"), c(">", "&gt;"), c("\"", "&quot;"))) {
    text <- gsub(each[1], each[2], text, fixed = TRUE)
  }
  text
}

# An element: its attributes in order (those that are NULL are left out), and the lines inside, or
# `text` on the element's own line.
element <- function(tag, ..., inside = NULL, text = NULL) {
  values <- vapply(Filter(Negate(is.null), list(...)), number, "")
  start <- paste0("<", tag, paste0(sprintf(" %s=\"%s\"", names(values), escape(values)), collapse = ""))
  if (!is.null(text)) return(paste0(start, ">", escape(text), "</", tag, ">"))
  if (!length(inside)) return(paste0(start, "/>"))
  c(paste0(start, ">"), paste0("  ", inside), paste0("</", tag, ">"))
}

# The lines that `piece` makes of each of some things, one after the other.
each <- function(things, piece, ...) unlist(lapply(things, piece, ...), use.names = FALSE)

# As `element`, and no line at all where there is nothing to hold.
section <- function(tag, ..., inside) if (length(inside)) element(tag, ..., inside = inside)

declaration <- "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
extension <- function(name, ..., inside = NULL) {
  element("Extension", extender = "velscore", name = name, ..., inside = inside)
}

pmml <- function(description, fields, model, version = "4.4") {
  space <- paste0("http://www.dmg.org/PMML-", sub(".", "_", version, fixed = TRUE))
  c(declaration, element("PMML", xmlns = space, version = version, inside = c(
    element("Header", copyright = "Public example data", description = description),
    element("DataDictionary", numberOfFields = length(fields), inside = each(fields, data_field)), model)))
}

# A field is a list: name, type (double, integer, string), levels (NULL for a covariate), ordered.
field <- function(name, column, integers = character(), ordered = FALSE) {
  list(name = name, levels = levels(column), ordered = ordered,
       type = if (name %in% integers) "integer" else if (is.factor(column)) "string" else "double")
}

data_field <- function(field) {
  kind <- if (is.null(field$levels)) "continuous" else if (field$ordered) "ordinal" else "categorical"
  element("DataField", name = field$name, optype = kind, dataType = field$type,
          inside = each(field$levels, function(level) element("Value", value = level)))
}

# `special` gives further attributes of single fields, as list(field = list(attribute = value)).
mining_schema <- function(target, inputs, special = list(), usage = "target") {
  element("MiningSchema", inside = c(
    element("MiningField", name = target, usageType = usage),
    each(inputs, function(name) {
      do.call(element, c(list("MiningField", name = name, usageType = "active"), special[[name]]))
    })))
}

# A parameter is a list: name, label, cells (a list of predictor and value), reference point or NULL.
parameter_list <- function(parameters) {
  element("ParameterList", inside = each(parameters, function(p) {
    element("Parameter", name = p$name, label = p$label, referencePoint = p$reference)
  }))
}

contrast_matrix <- function(matrix, listed) {
  c(if (listed) element("Categories", inside = each(rownames(matrix), function(level) {
      element("Category", value = level)
    })),
    element("Matrix", nbRows = nrow(matrix), nbCols = ncol(matrix), inside = each(seq_len(nrow(matrix)), function(i) {
      element("Array", type = "real", n = ncol(matrix), text = paste(number(matrix[i, ]), collapse = " "))
    })))
}

# `contrasts` holds the contrast matrices of factors, and `type` is what the document calls them.
predictor_lists <- function(factors, covariates, contrasts = list(), type = NULL, listed = TRUE) {
  one <- function(name) {
    if (is.null(contrasts[[name]])) return(element("Predictor", name = name))
    element("Predictor", name = name, contrastMatrixType = type, inside = contrast_matrix(contrasts[[name]], listed))
  }
  c(section("FactorList", inside = each(factors, one)), section("CovariateList", inside = each(covariates, one)))
}

pp_matrix <- function(parameters) {
  element("PPMatrix", inside = each(parameters, function(p) {
    each(p$cells, function(cell) {
      element("PPCell", value = cell$value, predictorName = cell$predictor, parameterName = p$name)
    })
  }))
}

# The lower triangle of a covariance matrix.
pcov_matrix <- function(names, covariances) {
  if (is.null(covariances)) return(NULL)
  element("PCovMatrix", type = "model", inside = each(seq_along(names), function(i) {
    element_each("PCovCell", pRow = names[i], pCol = names[1:i], value = covariances[i, 1:i])
  }))
}

# A row of elements that hold nothing, made at once.
element_each <- function(tag, ...) {
  values <- lapply(list(...), function(x) escape(number(x)))
  parts <- Map(function(attribute, value) sprintf(" %s=\"%s\"", attribute, value), names(values), values)
  paste0("<", tag, do.call(paste0, unname(parts)), "/>")
}

pcell <- function(parameter, beta, df = 1, target = NULL) {
  element("PCell", targetCategory = target, parameterName = parameter, beta = beta, df = df)
}

baseline_cells <- function(baseline) {
  element_each("BaselineCell", time = baseline$time, cumHazard = baseline$hazard)
}
