# Fits the models of tests/data/cases anew and writes their documents, tables and expected numbers.
#
#     Rscript generate.R OUT [FOLDER...]
#
# writes OUT/FOLDER/{model.pmml,input.csv,expected.csv} for each folder, for all of them when none is named.
# Needs R with its recommended packages; compare.py tells how what was made differs from what is kept.

here <- dirname(normalizePath(sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))))
kept <- file.path(dirname(here), "cases")
suppressPackageStartupMessages({
  library(MASS)
  library(nnet)
  library(survival)
})
for (part in c("document", "design", "families", "data"))
  source(file.path(here, paste0(part, ".R")), encoding = "UTF-8")

# A model's description is a function that answers its three files; the fits of the others cost nothing until
# they are asked for.
cases <- list()
add_case <- function(folder, make) cases[[folder]] <<- make
for (models in sort(list.files(file.path(here, "models"), full.names = TRUE))) source(models, encoding = "UTF-8")

csv_text <- function(column) {
  text <- ifelse(is.na(column), "", if (is.numeric(column)) number(column) else as.character(column))
  ifelse(grepl("[\",]", text), paste0("\"", gsub("\"", "\"\"", text, fixed = TRUE), "\""), text)
}
csv <- function(table) {
  c(paste(csv_text(names(table)), collapse = ","), do.call(paste, c(lapply(unname(table), csv_text), sep = ",")))
}

write_case <- function(out, folder) {
  made <- cases[[folder]]()
  into <- file.path(out, folder)
  dir.create(into, recursive = TRUE, showWarnings = FALSE)
  save <- function(lines, file) writeLines(enc2utf8(lines), file.path(into, file), useBytes = TRUE)
  save(made$document, "model.pmml")
  save(csv(made$table), "input.csv")
  save(csv(made$expected), "expected.csv")
}

arguments <- commandArgs(trailingOnly = TRUE)
if (!length(arguments)) stop("usage: Rscript generate.R OUT [FOLDER...]")
wanted <- if (length(arguments) > 1) arguments[-1] else names(cases)
unknown <- setdiff(wanted, names(cases))
if (length(unknown)) stop("no model is described for ", toString(unknown))
for (folder in wanted) write_case(arguments[1], folder)
