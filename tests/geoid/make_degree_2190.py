#!/usr/bin/env python3
"""Undulations of the synthetic model of degree 2190 in global_geoid_test.cc, in 40 digits.

The normalised functions of one order after the other by the recursion over the degrees
(Holmes & Featherstone 2002, eqs. 11-13), whose numbers have exponents of any size here. Takes some
minutes: make_degree_2190.py >degree_2190.inc
"""
from mpmath import atan, cos, mp, mpf, pi, sin, sqrt

mp.dps = 40
DEGREE = 2190
A, E2, ONE_LESS_E2 = mpf(6378137), mpf(0.00669437999013), mpf(0.99330562000987)
GRAVITY, SOMIGLIANA = mpf(9.7803253359), mpf(0.00193185265246)
GM, ZERO_DEGREE = mpf(3.986004418e14), mpf(-0.53)
# Radians; the second and third are where a pole's distance lets the sectorial functions fall below
# the range of a double before the last significant order.
PLACES = [(0.0, 0.3), (1.1940, 2.0), (-1.35, -1.1), (0.75, 0.7), (1.55, 3.0), (1.5707, -2.5),
          (-0.2, 1.0)]


def coefficient(n, m, odd):
    """In double precision, as the test makes it; sums and products of whole numbers are exact."""
    return float((7919 * n + 104729 * m + 31 * odd) % 2003 - 1001) * (1e-8 / float(n * n))


def undulation(lat, lon):
    phi = mpf(lat)
    t = sin(phi) ** 2
    W = sqrt(1 - E2 * t)
    p, z = A / W * cos(phi), A / W * ONE_LESS_E2 * sin(phi)
    radius = sqrt(p * p + z * z)
    c, s = z / radius, p / radius
    gravity = GRAVITY * (1 + SOMIGLIANA * t) / W
    ar = A / radius
    power = [ar ** n for n in range(DEGREE + 1)]
    total, sectorial = mpf(0), mpf(1)
    root = [sqrt(mpf(k)) for k in range(2 * DEGREE + 2)]
    for m in range(DEGREE + 1):
        if m == 1:
            sectorial = root[3] * s
        elif m > 1:
            sectorial = root[2 * m + 1] / root[2 * m] * s * sectorial
        before, now, C, S = mpf(0), sectorial, mpf(0), mpf(0)
        for n in range(m, DEGREE + 1):
            if n > m:
                a = root[2 * n - 1] * root[2 * n + 1] / (root[n - m] * root[n + m])
                b = 0
                if n > m + 1:
                    b = (root[2 * n + 1] * root[n + m - 1] * root[n - m - 1] /
                         (root[n - m] * root[n + m] * root[2 * n - 3]))
                before, now = now, a * c * now - b * before
            if n >= 2:
                term = power[n] * now
                C += term * coefficient(n, m, 0)
                S += term * coefficient(n, m, 1)
        total += C * cos(m * mpf(lon)) + S * sin(m * mpf(lon))
    return total * GM / (gravity * radius) + ZERO_DEGREE


for place in PLACES:
    print("{%r, %r, %s}," % (*place, mp.nstr(undulation(*place), 17)), flush=True)
