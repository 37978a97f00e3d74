"""Means of the generalized linear model's links and their derivatives by eta, for
tests/models/gzlrlinks_test.cpp and tests/kernels/links_test.cpp.

    python3 links.py > links.csv

Every mean comes from the link's own definition by mpmath with 50 digits, at numbers that are
doubles exactly, and is written with 17 digits. Only points with a mean in the link's range are
written. The derivative is mpmath's own, of differences; it takes
800 digits, since a mean may lie by some e-304 below 1.
"""

from mpmath import mp, mpf, diff, exp, ncdf, power, workdps

mp.dps = 50

WIDE = [-700, -300, -40, -12, -5, -2.5, -1, -0.375, 0, 0.375, 1, 2.5, 5, 12, 40, 300, 700]
NEAR = [-30, -12, -5, -2.5, -1, -0.375, -0.0625, 0, 0.0625, 0.375, 1, 2.5, 3.5, 6]
BELOW_ZERO = [-700, -300, -40, -12, -5, -2.5, -1, -0.375, -0.0625]


def odds(t):
    return t / (1 + t)


def root(x, k):
    """x^(1/k), the real odd root of a negative number."""
    if x < 0:
        return -power(-x, 1 / k)
    return power(x, 1 / k)


# Number of the link, k, the points, the mean.
LINKS = [
    (0, 0, WIDE, lambda eta, k: eta),
    (1, 0, NEAR, lambda eta, k: 1 - exp(-exp(eta))),
    (2, 0, WIDE, lambda eta, k: exp(eta)),
    (3, 0, NEAR, lambda eta, k: 1 - exp(eta)),
    (4, 0, WIDE, lambda eta, k: odds(exp(eta))),
    (5, 0.25, BELOW_ZERO, lambda eta, k: exp(eta) / (1 - exp(eta)) / k),
    (5, 3, BELOW_ZERO, lambda eta, k: exp(eta) / (1 - exp(eta)) / k),
    (6, 0, [-eta for eta in NEAR], lambda eta, k: exp(-exp(-eta))),
    (7, 0, WIDE, lambda eta, k: odds(exp(eta))),
    (7, 0.5, [-1.5, -1, -0.375, 0, 0.375, 1, 5, 40], lambda eta, k: odds(power(1 + eta * k, 1 / k))),
    (7, 2, [-0.375, 0, 0.375, 1, 5, 40, 700], lambda eta, k: odds(power(1 + eta * k, 1 / k))),
    (7, -1, [-40, -5, -1, -0.375, 0, 0.375], lambda eta, k: odds(power(1 + eta * k, 1 / k))),
    (8, 0, WIDE, lambda eta, k: exp(eta)),
    (8, 0.5, [0.0625, 0.375, 1, 2.5, 40, 700], root),
    (8, 2, [0.0625, 0.375, 1, 2.5, 40, 700], root),
    (8, 3, [-700, -8, -1, -0.375, 0.375, 1, 8, 700], root),
    (8, -1, [-40, -5, -0.375, 0.0625, 0.375, 1, 5, 40], root),
    (8, -2, [0.0625, 0.375, 1, 2.5, 40, 700], root),
    (9, 0, [-30, -12, -5, -2.5, -1, -0.375, 0, 0.375, 1, 2.5, 5, 8], lambda eta, k: ncdf(eta)),
]

print("link,k,eta,mean,derivative")
for link, k, points, mean in LINKS:
    for eta in points:
        with workdps(800):
            slope = diff(lambda x: mean(x, mpf(k)), mpf(eta))
        print(f"{link},{k},{eta},{mp.nstr(mean(mpf(eta), mpf(k)), 17)},{mp.nstr(slope, 17)}")
