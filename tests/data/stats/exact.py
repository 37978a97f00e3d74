#!/usr/bin/env python3
"""Writes tests/data/stats/exact/*.csv: exact values that the reference files don't have.

Two kinds of points. Those of a reference file whose `truth` is empty because the library's algorithm
departs from the function there, wherever the function has a value of its own. And a grid of everyday
arguments with the small tails beside them. Everything is computed from the definitions, at 50 digits
(mpmath), and written as the nearest double. The columns are those of the reference files; `algorithm`
stays empty. Without arguments it takes some ten minutes; names of functions make those files alone.
"""
import csv
import functools
import itertools
import math
import sys
from pathlib import Path

from mpmath import binomial, erf, erfc, exp, expm1, floor, isinf, log, loggamma, mp, mpf, nstr, pi, sqrt

mp.dps = 50
HERE = Path(__file__).parent
TINY = mpf(2) ** -1074


# The distributions, each as (lower tail, upper tail), so that neither is one minus the other where it is small.

def complement(small, is_lower):
    return (small, 1 - small) if is_lower else (1 - small, small)


def normal(z):
    return erfc(-z / sqrt(2)) / 2, erfc(z / sqrt(2)) / 2


def gamma_tails(a, x):
    if x <= 0:
        return mpf(0), mpf(1)
    front = exp(a * log(x) - x - loggamma(a))
    if x < a + 1:  # series
        term = total = 1 / a
        n = a
        while term > total * mp.eps:
            n += 1
            term *= x / n
            total += term
        return complement(front * total, True)
    b, c, d = x + 1 - a, 1 / (mpf(10) ** -200), 1 / (x + 1 - a)  # continued fraction (Lentz)
    h = d
    for i in itertools.count(1):
        an = -i * (i - a)
        b += 2
        d = 1 / (an * d + b)
        c = b + an / c
        h *= d * c
        if abs(d * c - 1) < mp.eps * 4:
            return complement(front * h, False)


def beta_tails(a, b, x, y=None):
    """Of x, with y = 1 - x where that is known better."""
    y = 1 - x if y is None else y
    if x <= 0:
        return mpf(0), mpf(1)
    if y <= 0:
        return mpf(1), mpf(0)
    if x > (a + 1) / (a + b + 2):
        upper, lower = beta_tails(b, a, y, x)
        return lower, upper
    front = exp(a * log(x) + b * log(y) - (loggamma(a) + loggamma(b) - loggamma(a + b))) / a
    c, d = mpf(1), 1 / (1 - (a + b) * x / (a + 1))
    h = d
    for m in itertools.count(1):
        for an in (m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m)),
                   -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1))):
            d = 1 / (1 + an * d)
            c = 1 + an / c
            h *= d * c
        if abs(d * c - 1) < mp.eps * 4:
            return complement(front * h, True)


def chi_tails(x, df):
    return gamma_tails(df / 2, x / 2)


def t_tails(t, df):
    half = beta_tails(df / 2, mpf(1) / 2, df / (df + t * t), t * t / (df + t * t))[0] / 2
    return complement(half, t <= 0)


def f_tails(f, df1, df2):
    if f <= 0:
        return mpf(0), mpf(1)
    return beta_tails(df1 / 2, df2 / 2, df1 * f / (df2 + df1 * f), df2 / (df2 + df1 * f))


def poisson_sum(mean, value):
    """Sum of Poisson weights times value(j), outwards from the mean."""
    middle = int(floor(mean))
    total = mpf(0)
    for steps in (range(middle, -1, -1), itertools.count(middle + 1)):
        for j in steps:
            weight = exp(j * log(mean) - mean - loggamma(j + 1))
            total += weight * value(j)
            if abs(j - mean) > 10 and weight < mpf(10) ** -330:
                break
    return total


@functools.cache
def nc_beta(x, a, b, lam):
    return beta_tails(a, b, x)[0] if lam == 0 else poisson_sum(lam / 2, lambda j: beta_tails(a + j, b, x)[0])


@functools.cache
def nc_chi(x, df, lam):
    if x <= 0 or lam == 0:
        return chi_tails(x, df)[0]
    return poisson_sum(lam / 2, lambda j: chi_tails(x, df + 2 * j)[0])


@functools.cache
def nc_f(f, df1, df2, lam):
    if f <= 0:
        return mpf(0)
    x, y = df1 * f / (df2 + df1 * f), df2 / (df2 + df1 * f)
    value = lambda j: beta_tails(df1 / 2 + j, df2 / 2, x, y)[0]
    return value(0) if lam == 0 else poisson_sum(lam / 2, value)


@functools.cache
def nc_t(t, df, delta):
    """Phi(t s - delta) over the density of s, s^2 df chi-square: by quadrature, for a t of either sign."""
    norm = log(2) + (df / 2) * log(df / 2) - loggamma(df / 2)
    density = lambda s: exp(norm + (df - 1) * log(s) - df * s * s / 2)
    spread = 1 / sqrt(2 * df)
    edges = sorted({mpf(0)} | {max(mpf(0), 1 + k * spread) for k in (-24, -12, -6, -3, -1, 0, 1, 3, 6, 12, 24)})
    return mp.quad(lambda s: normal(t * s - delta)[0] * density(s) if s > 0 else mpf(0), edges)


def t_density(t, df):
    return exp(loggamma((df + 1) / 2) - loggamma(df / 2) - log(pi * df) / 2 - (df + 1) / 2 * log(1 + t * t / df))


def quantile(tails, p, low, high):
    """The x > 0 with the lower tail p, found against the smaller tail."""
    p = mpf(p)
    return tail_quantile(tails, min(p, 1 - p), p <= mpf(1) / 2, low, high)


def tail_quantile(tails, wanted, is_lower, low, high):
    """The x > 0 with that lower or upper tail, by bisection of log x and then secants."""
    below = (lambda x: tails(x)[0] < wanted) if is_lower else (lambda x: tails(x)[1] > wanted)
    mp.dps = 20
    lo, hi = log(mpf(low)), log(mpf(high))
    for _ in range(48):
        mid = (lo + hi) / 2
        lo, hi = (mid, hi) if below(exp(mid)) else (lo, mid)
    mp.dps = 50
    side = 0 if is_lower else 1
    gap = lambda v: log(tails(exp(v))[side]) - log(wanted)
    a, b = lo, hi
    fa, fb = gap(a), gap(b)
    for _ in range(8):  # secants: each adds half as many digits again
        if fa == fb:
            break
        a, b, fa = b, b - fb * (b - a) / (fb - fa), fb
        fb = gap(b)
        if abs(b - a) < mpf(10) ** -40 * max(1, abs(b)):
            break
    return exp(b)


@functools.cache
def normal_quantile(p):
    if p == 0.5:
        return mpf(0)
    upper = tail_quantile(normal, min(mpf(p), 1 - mpf(p)), False, "1e-25", 60)
    return -upper if p < 0.5 else upper


@functools.cache
def t_quantile(p, df):
    if p == 0.5:
        return mpf(0)
    x = tail_quantile(lambda t: t_tails(t, df), min(mpf(p), 1 - mpf(p)), False, "1e-25", "1e200")
    return -x if p < 0.5 else x


@functools.cache
def beta_quantile(p, a, b):
    if p in (0, 1):
        return mpf(p)
    # in the odds x / (1 - x), so that both ends are resolved
    odds = quantile(lambda o: beta_tails(a, b, o / (1 + o), 1 / (1 + o)), p, "1e-400", "1e400")
    return odds / (1 + odds)


@functools.cache
def f_quantile(p, df1, df2):
    return mpf(0) if p == 0 else quantile(lambda f: f_tails(f, df1, df2), p, "1e-400", "1e400")


@functools.cache
def chi_quantile(p, df):
    return mpf(0) if p == 0 else quantile(lambda x: chi_tails(x, df), p, "1e-100000", "1e12")


def binomial_point(k, n, p):
    return exp(loggamma(n + 1) - loggamma(k + 1) - loggamma(n - k + 1) + k * log(p) + (n - k) * log(1 - p))


def binomial_lower(x, n, p):
    k = floor(x)
    return mpf(0) if k < 0 else mpf(1) if k >= n else beta_tails(n - k, k + 1, 1 - p, p)[0]


def hyper_point(x, population, successes, draws):
    return binomial(draws, x) * binomial(population - draws, successes - x) / binomial(population, successes)


def hyper_lower(x, population, successes, draws):
    low = max(0, int(successes + draws - population))
    return sum((hyper_point(k, population, successes, draws) for k in range(low, int(x) + 1)), mpf(0))


def non_centrality(distribution, p, start):
    """The v >= 0 with distribution(v) = p, which falls; 0 where p isn't below distribution(0)."""
    if distribution(mpf(0)) <= p:
        return mpf(0)
    mp.dps = 25
    lo, hi = mpf(0), mpf(start)
    while distribution(hi) > p:
        lo, hi = hi, hi * 2
    for _ in range(60):
        mid = (lo + hi) / 2
        lo, hi = (mid, hi) if distribution(mid) > p else (lo, mid)
    mp.dps = 50
    return (lo + hi) / 2


# The grids.
P = [1e-40, 1e-30, 1e-20, 1e-12, 1e-9, 1e-6, 1e-4, 0.001, 0.005, 0.01, 0.025, 0.05, 0.1, 0.3, 0.499, 0.7, 0.9, 0.95,
     0.975, 0.99, 0.995, 0.999, 1 - 1e-6, 1 - 1e-9, 1 - 1e-12]
DF = [0.5, 1.0, 1.5, 2.0, 3.0, 5.0, 10.0, 20.0, 30.0, 100.0, 300.0]
Z = [-30.0, -10.0, -5.0, -3.0, -1.96, -1.0, -0.1, -1e-9, 1e-9, 0.1, 1.0, 1.645, 1.96, 3.0, 5.0, 8.0]
CHI = [1e-12, 1e-6, 0.001, 0.1, 1.0, 3.84, 10.0, 50.0, 200.0, 600.0]
T = [s * t for t in (1e-9, 1e-3, 0.1, 0.5, 1.0, 1.96, 3.0, 5.0, 20.0, 1e3, 1e6, 1e9) for s in (-1, 1)]
F_DF = [(1.0, 10.0), (2.0, 5.0), (3.0, 20.0), (4.0, 100.0), (10.0, 10.0), (30.0, 200.0), (300.0, 300.0)]
F = [1e-9, 1e-3, 0.1, 0.5, 1.0, 2.0, 5.0, 20.0, 1e3, 1e6]
BETA = [(0.5, 0.5), (0.5, 5.0), (2.0, 3.0), (5.0, 0.5), (15.0, 0.5), (10.0, 20.0), (50.0, 200.0), (200.0, 50.0)]
X = [1e-12, 1e-6, 0.001, 0.05, 0.3, 0.5, 0.8, 0.99, 1 - 1e-9]
TRIALS = [(5.0, 0.3), (20.0, 0.5), (100.0, 0.01), (100.0, 0.3), (300.0, 0.5)]


def grid(*axes):
    """All combinations; an axis of tuples gives several arguments."""
    for point in itertools.product(*axes):
        yield tuple(itertools.chain(*(v if isinstance(v, tuple) else (v,) for v in point)))


def counts():
    return [(float(k), n, p) for n, p in TRIALS for k in sorted({0, 1, int(n * p / 2), int(n * p), int(n * p * 1.5), int(n) - 1})]


def hypergeometric():
    for population, successes, draws in ((20, 7, 3), (200, 40, 25), (1000, 300, 100), (1000, 500, 400)):
        mean = successes * draws // population
        for x in sorted({0, mean // 2, mean, mean + mean // 2, min(successes, draws) - 1}):
            if x >= max(0, successes + draws - population):
                yield x, population, successes, draws


sigma_ok = lambda a: a[2] > 0
positive = lambda *where: lambda a: all(a[i] > 0 for i in where)
always = lambda a: True
probability = lambda a: 0 < a[0] < 1

# The largest argument that is computed here: the sums take about its root in terms, for a quantile many times.
LARGEST = {"zeltidfchi": 1e6, "IdfChi": 1e6, "IdfGam": 1e6, "cdfbet": 1e9, "CdfBeta": 1e9}
# name: (value, grid, which points of the reference have a value)
FUNCTIONS = {
    "probit": (normal_quantile, grid(P), probability),
    "IdfStdNorm": (normal_quantile, grid(P), probability),
    "IdfNorm": (lambda p, m, s: m + s * normal_quantile(p), grid(P, [(0.0, 1.0), (100.0, 15.0)]), lambda a: probability(a) and a[2] > 0),
    "derf": (lambda x: erf(x), grid(Z), always),
    "derfc": (lambda x: erfc(x), grid(Z), always),
    "prbnrm": (lambda z: normal(z)[0], grid(Z), always),
    "CdfStdNorm": (lambda z: normal(z)[0], grid(Z), always),
    "CdfNorm": (lambda x, m, s: normal((x - m) / s)[0], grid(Z, [(0.0, 1.0), (0.5, 0.25)]), sigma_ok),
    "PdfNormalStandard": (lambda z: exp(-z * z / 2) / sqrt(2 * pi), grid(Z), always),
    "PdfNormal": (lambda x, m, s: exp(-((x - m) / s) ** 2 / 2) / sqrt(2 * pi) / s, grid(Z, [(0.0, 1.0), (0.5, 0.25)]), sigma_ok),
    "dnlgam": (loggamma, grid([1e-9, 0.1, 0.9, 1.1, 1.9, 2.1, 5.0, 10.5, 150.0]), positive(0)),
    "gammad": (lambda x, a, lower: gamma_tails(a, x)[0 if lower else 1], grid([v / 2 for v in CHI], [d / 2 for d in DF], [1.0, 0.0]), positive(1)),
    "cdfexp": (lambda x, r: -expm1(-x * r), grid([1e-12, 1e-6, 0.01, 0.5, 3.0, 40.0], [0.1, 1.0, 20.0]), positive(1)),
    "PdfGamma": (lambda x, k, r: exp((k - 1) * log(x * r) + log(r) - x * r - loggamma(k)),
                 grid([1e-6, 0.1, 1.0, 10.0, 100.0], [0.5, 1.0, 2.5, 30.0], [0.5, 2.0]), positive(0, 1, 2)),
    "CdfGam": (lambda x, k, r: gamma_tails(k, x * r)[0], grid(CHI, [0.5, 1.0, 2.5, 30.0], [0.5, 2.0]), positive(1, 2)),
    "IdfGam": (lambda p, k, r: chi_quantile(p, 2 * k) / 2 / r, grid(P, [0.5, 1.0, 2.5, 30.0], [0.5]),
               lambda a: 0 <= a[0] < 1 and a[1] > 0 and a[2] > 0),
    "CdfChi": (lambda x, df: chi_tails(x, df)[0], grid(CHI, DF), positive(1)),
    "SigChi": (lambda x, df: chi_tails(x, df)[1], grid(CHI, DF), positive(1)),
    "zeltidfchi": (chi_quantile, grid(P, DF), lambda a: 0 <= a[0] < 1 and a[1] > 0),
    "IdfChi": (chi_quantile, grid(P, DF), lambda a: 0 <= a[0] < 1 and a[1] > 0),
    "cdfbet": (lambda x, a, b: beta_tails(a, b, x)[0], grid(X, BETA), positive(1, 2)),
    "CdfBeta": (lambda x, a, b: beta_tails(a, b, x)[0], grid(X, BETA), positive(1, 2)),
    "betinv": (beta_quantile, grid(P, BETA), lambda a: 0 <= a[0] <= 1 and a[1] > 0 and a[2] > 0),
    "IdfBeta": (beta_quantile, grid(P, BETA), lambda a: 0 <= a[0] <= 1 and a[1] > 0 and a[2] > 0),
    "PdfT": (t_density, grid(T, DF), positive(1)),
    "zeltcdft": (lambda t, df: t_tails(t, df)[0], grid(T, DF), positive(1)),
    "CdfT": (lambda t, df: t_tails(t, df)[0], grid(T, DF), positive(1)),
    "SigT": (lambda t, df: t_tails(t, df)[1], grid(T, DF), positive(1)),
    "zeltidft": (t_quantile, grid(P, DF), lambda a: probability(a) and a[1] > 0),
    "IdfT": (t_quantile, grid(P, DF), lambda a: probability(a) and a[1] > 0),
    "zeltcdff": (lambda f, m, n: f_tails(f, m, n)[0], grid(F, F_DF), positive(1, 2)),
    "CdfF": (lambda f, m, n: f_tails(f, m, n)[0], grid(F, F_DF), positive(1, 2)),
    "SigF": (lambda f, m, n: f_tails(f, m, n)[1], grid(F, F_DF), positive(1, 2)),
    "zeltidff": (f_quantile, grid(P, F_DF), lambda a: 0 <= a[0] < 1 and a[1] > 0 and a[2] > 0),
    "IdfF": (f_quantile, grid(P, F_DF), lambda a: 0 <= a[0] < 1 and a[1] > 0 and a[2] > 0),
    "dnlbnc": (lambda n, k: log(binomial(n, k)), grid([(5.0, 2.0), (33.0, 16.0), (34.0, 1.0), (100.0, 3.0), (1000.0, 500.0)]), lambda a: 0 <= a[1] <= a[0]),
    "CdfBin": (binomial_lower, counts(), lambda a: a[1] >= 1 and a[1] == int(a[1]) and 0 < a[2] < 1),
    "PdfBin": (binomial_point, counts(), lambda a: a[1] >= 1 and 0 < a[2] < 1 and 0 <= a[0] <= a[1] and a[0] == int(a[0])),
    "PdfHyper": (hyper_point, hypergeometric(), lambda a: 0 < a[2] <= a[1] and 0 < a[3] <= a[1] and max(0, a[2] + a[3] - a[1]) <= a[0] <= min(a[2], a[3])),
    "CDFHyper": (hyper_lower, hypergeometric(), lambda a: a[1] <= 1e6 and all(v == int(v) for v in a) and 1 <= min(a[2:]) and max(a[2:]) <= a[1]),
    "ncdbet": (lambda x, a, b, lam, _: nc_beta(x, a, b, lam), grid([0.01, 0.3, 0.7, 0.99], [(2.0, 3.0), (0.5, 10.0)], [0.5, 5.0, 40.0], [1e-12]),
               lambda a: a[1] > 0 and a[2] > 0 and a[3] >= 0 and a[4] < 1),
    "NonCentralCdfF": (lambda f, m, n, lam, _: nc_f(f, m, n, lam), grid([0.1, 1.0, 3.0, 10.0], [(3.0, 20.0), (2.0, 5.0)], [0.5, 5.0, 40.0], [1e-12]),
                       lambda a: a[1] > 0 and a[2] > 0 and a[3] >= 0 and a[4] < 1),
    "NonCentralCdfChi": (nc_chi, grid([0.01, 1.0, 4.0, 20.0, 80.0], [1.0, 3.0, 30.0], [0.5, 5.0, 40.0]), lambda a: a[1] > 0 and a[2] >= 0),
    "NonCentralCdfT": (nc_t, grid([-3.0, -1.0, -0.1, 0.1, 1.0, 3.0, 10.0], [3.0, 20.0], [-2.0, 0.5, 3.0]), lambda a: a[1] > 0),
    "FindNCParamChi": (lambda x, df, p, _: non_centrality(lambda v: nc_chi(x, df, v), p, 1), grid([4.0, 12.0], [3.0, 10.0], [0.05, 0.2, 0.5], [1e-10]),
                       lambda a: False),
    "FindNCParamF": (lambda f, m, n, p, _: non_centrality(lambda v: nc_f(f, m, n, v), p, 1), grid([2.0, 4.0], [(3.0, 20.0)], [0.05, 0.2, 0.5], [1e-10]),
                     lambda a: False),
}


def text(value):
    """As the nearest double is written; None where that is not finite."""
    if isinf(value):
        return None
    return repr(float(nstr(value, 25, min_fixed=0, max_fixed=0))) if abs(value) > TINY / 2 else "0.0"


def departures(name, accepts):
    """The points of the reference without a truth at which the function has a value all the same."""
    with open(HERE / f"{name}.csv") as file:
        rows = list(csv.reader(file))[1:]
    for row in rows:
        try:
            args = tuple(float(v) for v in row[:-3])
        except ValueError:
            continue
        if row[-3] == "" and row[-2] not in ("missing", "nan") and row[-1] in ("", "0") and all(map(math.isfinite, args)):
            if accepts(args) and max(map(abs, args)) <= LARGEST.get(name, 1e12):
                yield row[:-3], args


def main(names):
    (HERE / "exact").mkdir(exist_ok=True)
    for name in names or FUNCTIONS:
        value, points, accepts = FUNCTIONS[name]
        with open(HERE / f"{name}.csv") as file:
            header = file.readline()
        lines = []
        everything = itertools.chain(departures(name, accepts), (([repr(v) for v in point], point) for point in points))
        for fields, args in everything:
            truth = text(value(*(mpf(v) for v in args)))
            if truth is not None:
                lines.append(",".join([*fields, truth, "", ""]))
        (HERE / "exact" / f"{name}.csv").write_text(header + "\n".join(lines) + "\n")
        print(name, len(lines), flush=True)


main(sys.argv[1:])
