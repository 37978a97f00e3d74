# The data sets as the models take them.

birthwt_cases <- local({
  yes <- function(x) factor(x, 0:1, c("no", "yes"))
  transform(MASS::birthwt,
            weight_class = factor(low, 0:1, c("normal", "low")),
            race = factor(race, 1:3, c("white", "black", "other")),
            smoke = yes(smoke), ht = yes(ht), ui = yes(ui),
            visits = factor(pmin(ftv, 2L)))
})
