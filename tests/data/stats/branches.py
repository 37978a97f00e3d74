#!/usr/bin/env python3
"""Values for branches that the reference files don't reach, at 50 digits (mpmath).

Run it to see the table that tests/stats/*_test.cpp quote; each line names its test. Every formula is
written out here from its definition, not taken from the library.
"""
from fractions import Fraction
from math import comb

from mpmath import mp, mpf, betainc, erfc, gammainc, loggamma, log, nstr, quad, sqrt, pi, exp, gamma, inf

mp.dps = 50


def phi(z):
    return erfc(-z / sqrt(2)) / 2


def show(name, value):
    print(f"{name:68s} {nstr(value, 17)}")


def peizer_pratt_aux(x):
    """cbtaux: ((1 - x^2) + 2 x log x) / (1 - x)^2."""
    return ((1 - x * x) + 2 * x * log(x)) / (1 - x) ** 2


def beta_by_normal(x, a, b, turned):
    """The library's normal approximation of the beta ratio, as its comment defines it."""
    x, a, b = mpf(x), mpf(a), mpf(b)
    p, q, t, u = (b, a, 1 - x, x) if turned else (a, b, x, 1 - x)
    n = a + b - 1
    v = (peizer_pratt_aux((q - mpf(1) / 2) / n) * u + peizer_pratt_aux((p - mpf(1) / 2) / n) * t + 1) / (
        (n + mpf(1) / 6) * t * u)
    z = sqrt(v) * ((t + 1) / 3 + (t - p / n) * n + ((t / q - u / p) + (t - mpf(1) / 2) / (a + b)) / 50)
    return phi(-z if turned else z)


def beta_ratio(x, a, b):
    return betainc(mpf(a), mpf(b), 0, mpf(x), regularized=True)


def hyper_cdf(x, population, successes, draws):
    low = max(0, successes + draws - population)
    top = sum(comb(successes, k) * comb(population - successes, draws - k) for k in range(low, x + 1))
    return Fraction(top, comb(population, draws))


def rational(f):
    return mpf(f.numerator) / mpf(f.denominator)


show("cdfbet fallback, 3e11, 1e13 at 0.029126214116201043, turned",
     beta_by_normal(0.029126214116201043, 3e11, 1e13, True))
show("cdfbet fallback, 1e12, 3e11 at 0.76923076553550418, direct",
     beta_by_normal(0.76923076553550418, 1e12, 3e11, False))
show("cdfbet slow series, 2, 0.5 at 1 - 1e-8", beta_ratio(1 - 1e-8, 2.0, 0.5))
show("cdfbet slow series, 0.5, 2 at 1e-8", beta_ratio(1e-8, 0.5, 2.0))
show("IdfChi(1e-300, 2000) bisected: P at that point", gammainc(mpf(1000), 0, mpf("241.0970") , regularized=True))
for n in (1.0, 2.5, 400.0):
    show(f"log gamma {n}", loggamma(mpf(n)))
show("CDFHyper(8, 5000, 300, 150) exact", rational(hyper_cdf(8, 5000, 300, 150)))
show("CDFHyper(2, 2000, 100, 50) exact", rational(hyper_cdf(2, 2000, 100, 50)))
show("PdfT(0.3, 7)", gamma(mpf(4)) / (sqrt(7 * pi) * gamma(mpf("3.5"))) * (1 + mpf(0.3) ** 2 / 7) ** -4)
