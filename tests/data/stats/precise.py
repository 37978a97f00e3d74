#!/usr/bin/env python3
"""Writes tests/data/stats/precise/*.csv: truth where the library keeps a definition of its own.

CDFHyper: the smooth hypergeometric distribution function for populations above 1,000, as the exact
quotient of whole numbers. IdfBin: the usual quantile, the smallest k with P(X <= k) >= prob, from sums at
50 digits; points within 1e-12 of a step are left out. The columns are those of the reference files.
"""
import random
from math import comb
from pathlib import Path

from mpmath import mp, mpf, nstr

mp.dps = 50
random.seed(850)
folder = Path(__file__).parent / "precise"


def hyper_rows():
    for population in (1001, 2000, 5000, 10000, 20000, 100000):
        for _ in range(12):
            successes = random.randint(1, population - 1)
            draws = random.randint(1, min(population - 1, 400))
            mean = draws * successes / population
            spread = (mean * (1 - successes / population)) ** 0.5 + 1
            low, high = max(0, successes + draws - population), min(successes, draws)
            x = min(high - 1, max(low, round(random.gauss(mean, 2 * spread))))
            if x < low:
                continue
            top = sum(comb(successes, k) * comb(population - successes, draws - k) for k in range(low, x + 1))
            truth = mpf(top) / mpf(comb(population, draws))
            yield f"{x}.0,{population}.0,{successes}.0,{draws}.0,{nstr(truth, 17)},,0"


def binomial_rows():
    for n in (1, 2, 5, 20, 100, 1000):
        for _ in range(10):
            p, prob = round(random.uniform(0.01, 0.99), 3), round(random.uniform(0.001, 0.999), 6)
            term, total, k = (1 - mpf(p)) ** n, mpf(0), 0
            while True:
                total += term
                if abs(total - mpf(prob)) < mpf("1e-12"):
                    break
                if total >= mpf(prob):
                    yield f"{prob},{n}.0,{p},{k}.0,,0"
                    break
                term = term * (n - k) / (k + 1) * mpf(p) / (1 - mpf(p))
                k += 1


for name, header, rows in (("CDFHyper", "x,N,K,n", hyper_rows()), ("IdfBin", "prob,n,p", binomial_rows())):
    (folder / f"{name}.csv").write_text("\n".join([f"{header},truth,algorithm,code", *rows]) + "\n")
