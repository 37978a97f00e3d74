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


def bisect(rises, low, high):
    """The x in (low, high) where a function that rises passes 0."""
    for _ in range(220):
        mid = (low + high) / 2
        low, high = (mid, high) if rises(mid) < 0 else (low, mid)
    return (low + high) / 2


def beta_quantile(p, a, b):
    return bisect(lambda x: betainc(mpf(a), mpf(b), 0, x, regularized=True) - mpf(p), mpf(0), mpf(1))


def student_quantile(p, df):
    b = beta_quantile(2 * mpf(p), mpf(df) / 2, 0.5)
    return -sqrt((1 / b - 1) * df)


def beta_quantile_by_the_steps(p, a, b):
    """betinv for p <= 0.5, b = 0.5 and a > 1 as its comments define it: the start, then 50 rounds of damped steps."""
    p, a, b = mpf(p), mpf(a), mpf(b)
    z = bisect(lambda v: log(p) - log(phi(-v)), mpf(0), mpf(40))  # upper tail p
    log_beta = loggamma(a) + loggamma(b) - loggamma(a + b)
    chi = 2 * b * ((1 - 1 / (9 * b)) + sqrt(1 / (9 * b)) * z) ** 3
    ratio = (4 * a + 2 * b - 2) / chi
    if ratio > 1:
        x = 1 - 2 / (ratio + 1)
    else:
        start = (log(p * a) + log_beta) / p
        if start > 709:
            return a / (a + b)
        x = exp(start) if start >= -708 else mpf(0)
    x = min(max(x, mpf("1e-8")), mpf("0.9999999"))
    last, squared, bound = mpf(0), mpf(1), mpf(1)
    for _ in range(50):
        size = log(1 - x) * (1 - b) + log(x) * (1 - a) + log_beta
        if size > 709:
            return a / (a + b)
        step = (betainc(a, b, 0, x, regularized=True) - p) * (exp(size) if size >= -708 else 0)
        if step * last <= 0:
            bound = squared
        cut = step
        while True:
            squared, next_x = cut * cut, x - cut
            if abs(next_x) < mpf("1e-12"):
                next_x = mpf("1e-12")
            elif abs(next_x - 1) < mpf("1e-12"):
                next_x = 1 - mpf("1e-12")
            if squared < bound and 0 < next_x < 1:
                break
            cut /= 3
        if bound <= mpf("1e-20") or step * step <= mpf("1e-20") or abs(next_x - x) < mpf("1e-12"):
            break
        last, x = step, next_x
    return x


show("gammad(100, 0.125), upper", gammainc(mpf("0.125"), 100, inf, regularized=True))
show("betinv(1e-20, 20, 0.5)", beta_quantile(1e-20, 20, 0.5))
show("betinv(1e-11, 15, 0.5)", beta_quantile(1e-11, 15, 0.5))
show("betinv(0.5, 3000, 0.05)", beta_quantile(0.5, 3000, 0.05))
show("betinv(2e-40, 15, 0.5), the quantile", beta_quantile(2e-40, 15, 0.5))
show("betinv(2e-40, 15, 0.5), by the steps", beta_quantile_by_the_steps(2e-40, 15, 0.5))
show("betinv(2e-40, 40, 0.5), the quantile", beta_quantile(2e-40, 40, 0.5))
show("betinv(2e-40, 40, 0.5), by the steps", beta_quantile_by_the_steps(2e-40, 40, 0.5))
show("zeltidft(5e-12, 30)", student_quantile(5e-12, 30))
