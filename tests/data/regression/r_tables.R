# Writes data sets that come with R as tables for sklearn_models.py.
#
#     Rscript r_tables.R FOLDER
#
# Ran with R 4.2.2 and MASS 7.3-58.2.

folder <- commandArgs(trailingOnly = TRUE)[1]
save <- function(table, name) {
  write.csv(table, file.path(folder, paste0(name, ".csv")), row.names = FALSE, na = "")
}
save(mtcars, "mtcars")
save(airquality, "airquality")
save(warpbreaks, "warpbreaks")
save(ToothGrowth, "toothgrowth")
save(infert, "infert")
save(esoph, "esoph")
save(chickwts, "chickwts")
save(InsectSprays, "insectsprays")
save(MASS::birthwt, "birthwt")
save(MASS::Cars93, "cars93")
save(MASS::survey, "survey")
save(MASS::housing, "housing")
save(MASS::quine, "quine")
