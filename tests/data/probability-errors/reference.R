# The reference values of tests/system/probabilityerrors_test.cpp: the standard errors of the probabilities
# that R finds for the rows of cases.
#
#   Rscript tests/data/probability-errors/reference.R TESTS/DATA
#
# Made with R 4.2.2, MASS and the tables and documents of tests/data/cases. Of models of two categories
# predict(se.fit = TRUE) of the model that is fitted once more; of three categories, for which R has no
# such function, sqrt(g' V g) with the betas and covariances of the document, its derivatives g taken by
# a step along the imaginary axis, which loses no digits.
library(MASS)
data <- commandArgs(TRUE)[1]
digits <- function(x) sprintf("%.17g", x)
input <- function(name) read.csv(file.path(data, "cases", name, "input.csv"))
write <- function(name, errors) {
    write.csv(apply(errors, 2, digits), quote = FALSE, row.names = FALSE,
              file.path(data, "probability-errors", paste0(name, ".csv")))
}

births <- transform(birthwt, race = factor(race, labels = c("white", "black", "other")),
                    smoke = factor(smoke, labels = c("no", "yes")),
                    ui = factor(ui, labels = c("no", "yes")))
binary <- function(name, fit) {
    cases <- input(name)
    error <- predict(fit, cases, type = "response", se.fit = TRUE)$se.fit
    write(name, cbind(first = error, second = error))
}
binary("blr-birthwt-sum", glm(low ~ race + smoke + lwt, binomial, births,
                              contrasts = list(race = "contr.sum", smoke = "contr.sum")))
binary("blr-birthwt-cutoff", glm(low ~ race + ui + lwt, binomial, births))
binary("blr-bacteria-helmert", glm(y ~ trt * week, binomial, bacteria,
                                   contrasts = list(trt = "contr.helmert")))

# Attributes of the elements of one kind, in their order.
attributes_of <- function(lines, element, names) {
    found <- grep(paste0("<", element, " "), lines, value = TRUE)
    sapply(names, function(n) sub(paste0(".* ", n, "=\"([^\"]*)\".*"), "\\1", found))
}
multinomial <- function(name, categories, design) {
    lines <- readLines(file.path(data, "cases", name, "model.pmml"))
    cells <- attributes_of(lines, "PCell", c("targetCategory", "parameterName", "beta"))
    keys <- paste(cells[, 1], cells[, 2])
    betas <- as.numeric(cells[, 3])
    covs <- attributes_of(lines, "PCovCell", c("tRow", "pRow", "tCol", "pCol", "value"))
    V <- matrix(0, length(keys), length(keys), dimnames = list(keys, keys))
    row <- paste(covs[, 1], covs[, 2])
    col <- paste(covs[, 3], covs[, 4])
    V[cbind(row, col)] <- as.numeric(covs[, 5])
    V[cbind(col, row)] <- as.numeric(covs[, 5])
    probability <- function(x, b) {
        eta <- sapply(categories, function(k) {
            mine <- cells[, 1] == k
            if (any(mine)) sum(b[mine] * x) else 0
        })
        exp(eta) / sum(exp(eta))
    }
    X <- design(input(name))
    step <- 1e-30
    errors <- t(apply(X, 1, function(x) {
        g <- sapply(seq_along(betas), function(i) {
            b <- as.complex(betas)
            b[i] <- b[i] + complex(imaginary = step)
            Im(probability(x, b)) / step
        })
        sqrt(diag(g %*% V %*% t(g)))
    }))
    colnames(errors) <- categories
    write(name, errors)
}
multinomial("mlr-birthwt-race", c("white", "black", "other"),
            function(d) cbind(1, d$age, d$lwt, d$smoke == "yes", d$ht == "yes"))
