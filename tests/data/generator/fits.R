# The fits behind the documents of tests/data/cases, for scripts that ask R more about them: `fit_of(FOLDER)` fits
# that folder's model as generate.R does, and writes nothing. `generator` is this file's folder.

suppressPackageStartupMessages({
  library(MASS)
  library(nnet)
  library(survival)
})
fits <- new.env()
local({
  described <- list()
  add_case <- function(folder, make) described[[folder]] <<- make
  for (part in c("design", "families", "data")) sys.source(file.path(generator, paste0(part, ".R")), fits)
  # What makes a folder of a fit answers the fit alone.
  for (family in c("linear", "generalized", "contrast", "multinomial", "ordinal", "cox")) {
    assign(paste0(family, "_case"), function(fit, ...) fit, fits)
  }
  assign("add_case", add_case, fits)
  for (models in list.files(file.path(generator, "models"), full.names = TRUE)) sys.source(models, fits)
  fit_of <<- function(folder) described[[folder]]()
})
