#!/usr/bin/env python3
"""Writes statistics.expected: the numbers of the example, by numerical integration at 30 digits."""
from pathlib import Path

from mpmath import betainc, erfc, exp, findroot, gamma, gammainc, inf, mp, mpf, pi, quad, sqrt

mp.dps = 30
df = mpf(18)


def phi(z):
    return erfc(-z / sqrt(2)) / 2


def cdf_t(t, delta):
    """P(Z + delta <= t S), S = sqrt(chi-square / df): phi(t s - delta) weighted with the density of S."""
    c = 2 * (df / 2) ** (df / 2) / gamma(df / 2)
    return quad(lambda s: phi(t * s - delta) * c * s ** (df - 1) * exp(-df * s * s / 2), [0, 0.5, 1, 1.5, 3, 6])


critical = findroot(lambda t: cdf_t(t, 0) - mpf("0.975"), 2.1)
f = findroot(lambda x: betainc(1.5, 5, 0, 3 * x / (10 + 3 * x), regularized=True) - mpf("0.95"), 3.7)
chi = findroot(lambda x: gammainc(mpf(3) / 2, 0, x / 2, regularized=True) - mpf("0.95"), 7.8)
delta = mpf(10) / sqrt(20)
power = 1 - cdf_t(critical, delta) + cdf_t(-critical, delta)
needed = findroot(lambda d: cdf_t(critical, d) - mpf("0.2"), 2.9)

rows = [
    ("t, two-sided 5 per cent, 18 df", critical),
    ("F, 5 per cent, 3 and 10 df", f),
    ("chi-square, 5 per cent, 3 df", chi),
    ("power for a difference of one standard deviation", power),
    ("delta for a power of 80 per cent", needed),
]
text = "".join(f"{name:58s} {float(value):.4f}\n" for name, value in rows)
text += f"{'t with no degrees of freedom':58s} (none)\n"
(Path(__file__).parent / "statistics.expected").write_text(text)
