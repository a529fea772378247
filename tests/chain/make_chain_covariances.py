"""Prints chain_covariances.inc: covariances behind chains of steps, in 40 digits.

Each step is written from its publication and differentiated by itself at the position where the chain
has it; the covariance goes through the product of these matrices, and through its inverse for the way
back. Projections: Snyder 1987; the transverse Mercator is the analytic continuation of the meridian's
arc (Lee 1976), no series.
"""

from mpmath import (mp, mpf, mpc, sin, cos, tan, sqrt, pi, matrix, atan, atan2, log, exp, diff, ellipe,
                    asin, atanh, findroot)

mp.dps = 50
DEG, SEC = pi / 180, pi / 648000
GRS80 = (mpf(6378137), mpf("298.257222101"))
BESSEL = (mpf("6377397.155"), mpf("299.1528128"))
GIVEN = matrix([["4e-4", "1e-4", "-2e-4"], ["1e-4", "9e-4", "3e-4"], ["-2e-4", "3e-4", "25e-4"]])


def e2_of(ellipsoid):
    f = 1 / ellipsoid[1]
    return f * (2 - f)


def metres(ellipsoid, p):
    """Metres north, east and up for each radian, radian and metre at a position."""
    a, e2 = ellipsoid[0], e2_of(ellipsoid)
    w2 = 1 - e2 * sin(p[0]) ** 2
    return [a * (1 - e2) / (w2 * sqrt(w2)) + p[2], (a / sqrt(w2) + p[2]) * cos(p[0]), mpf(1)]


def to_geocentric(ellipsoid):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)

    def step(b, l, h):
        n = a / sqrt(1 - e2 * sin(b) ** 2)
        return [(n + h) * cos(b) * cos(l), (n + h) * cos(b) * sin(l), (n * (1 - e2) + h) * sin(b)]

    return step


def to_geographic(ellipsoid):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)

    def step(x, y, z):
        r = sqrt(x * x + y * y)
        phi = atan2(z, r * (1 - e2))
        for _ in range(25):
            n = a / sqrt(1 - e2 * sin(phi) ** 2)
            phi = atan2(z + e2 * n * sin(phi), r)
        height = r * cos(phi) + z * sin(phi) - a * sqrt(1 - e2 * sin(phi) ** 2)
        return [phi, atan2(y, x), height]

    return step


def rotation(axis, angle):
    m = mp.eye(3)
    i, j = (axis + 1) % 3, (axis + 2) % 3
    m[i, i] = m[j, j] = cos(angle)
    m[i, j], m[j, i] = -sin(angle), sin(angle)
    return m


def datum(x, y, z):
    turn = mp.eye(3)
    for axis, angle in enumerate(("0.202", "0.045", "-2.455")):
        turn = turn * rotation(axis, mpf(angle) * SEC)
    moved = matrix([x - mpf("598.1"), y - mpf("73.7"), z - mpf("418.2")])
    return list(turn * moved / (1 + mpf("6.7e-6")))


def fourteen(x, y, z):
    """Position-vector sense, at 16.9 years from the epoch."""
    years = mpf("16.9")
    at = lambda value, rate: mpf(value) + mpf(rate) * years
    t = [at("1.0053", "0.0008"), at("-1.9092", "-0.0006"), at("-0.5416", "-0.0014")]
    r = [at(v, w) * SEC for v, w in (("0.0267814", "0.0000667"), ("-0.0004203", "-0.0007574"),
                                     ("0.0109321", "-0.0000513"))]
    s = 1 + at("3.7e-10", "-7e-11")
    return [t[0] + s * (x - r[2] * y + r[1] * z), t[1] + s * (r[2] * x + y - r[0] * z),
            t[2] + s * (-r[1] * x + r[0] * y + z)]


def isometric(ellipsoid, b):
    e = sqrt(e2_of(ellipsoid))
    return atanh(sin(b)) - e * atanh(e * sin(b))


def conformal(ellipsoid, b):
    return 2 * atan(exp(isometric(ellipsoid, b))) - pi / 2


def transverse_mercator(ellipsoid, l0, k0):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)
    e = sqrt(e2)

    def step(b, l, h):
        psi = mpc(isometric(ellipsoid, b), l - l0)
        phi = findroot(lambda x: atanh(sin(x)) - e * atanh(e * sin(x)) - psi, mpc(b, (l - l0) * cos(b)))
        arc = a * (ellipe(phi, e2) - e2 * sin(phi) * cos(phi) / sqrt(1 - e2 * sin(phi) ** 2))
        return [k0 * arc.real, k0 * arc.imag, h]

    return step


def mercator(ellipsoid):
    return lambda b, l, h: [ellipsoid[0] * isometric(ellipsoid, b), ellipsoid[0] * l, h]


def lambert(ellipsoid, south, north, l0):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)
    m = lambda b: cos(b) / sqrt(1 - e2 * sin(b) ** 2)
    t = lambda b: exp(-isometric(ellipsoid, b))
    n = (log(m(south)) - log(m(north))) / (log(t(south)) - log(t(north)))
    f = m(south) / (n * t(south) ** n)

    def step(b, l, h):
        rho, theta = a * f * t(b) ** n, n * (l - l0)
        return [-rho * cos(theta), rho * sin(theta), h]

    return step


def stereographic(ellipsoid, b0, l0, k0):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)
    chi0, m0 = conformal(ellipsoid, b0), cos(b0) / sqrt(1 - e2 * sin(b0) ** 2)

    def step(b, l, h):
        chi, d = conformal(ellipsoid, b), l - l0
        factor = 2 * a * k0 * m0 / (cos(chi0) * (1 + sin(chi0) * sin(chi) + cos(chi0) * cos(chi) * cos(d)))
        return [factor * (cos(chi0) * sin(chi) - sin(chi0) * cos(chi) * cos(d)), factor * cos(chi) * sin(d), h]

    return step


def oblique_mercator(ellipsoid, azimuth, k0, l0, b0):
    a, e2 = ellipsoid[0], e2_of(ellipsoid)
    w2 = 1 - e2 * sin(b0) ** 2
    big_b = sqrt(1 + e2 * cos(b0) ** 4 / (1 - e2))
    big_a = a * big_b * k0 * sqrt(1 - e2) / w2
    d = big_b * sqrt(1 - e2) / (cos(b0) * sqrt(w2))
    big_f = d + sqrt(d * d - 1)
    big_e = big_f * exp(-big_b * isometric(ellipsoid, b0))
    gamma = asin(sin(azimuth) / d)
    origin = l0 - asin((big_f - 1 / big_f) / 2 * tan(gamma)) / big_b

    def step(b, l, h):
        q = big_e * exp(big_b * isometric(ellipsoid, b))
        s, t, v = (q - 1 / q) / 2, (q + 1 / q) / 2, sin(big_b * (l - origin))
        across = (-v * cos(gamma) + s * sin(gamma)) / t
        away = -big_a / big_b * atanh(across)
        along = big_a / big_b * atan2(s * cos(gamma) + v * sin(gamma), cos(big_b * (l - origin)))
        return [along * cos(azimuth) - away * sin(azimuth), away * cos(azimuth) + along * sin(azimuth), h]

    return step


def bilinear(b, l, h):
    """The first cell of the test's grid, arc-seconds at its four nodes."""
    u, v = (b - mpf(0.78)) / mpf(0.12), (l - mpf(0.1)) / mpf(0.12)
    at = lambda z: (1 - u) * ((1 - v) * z[0] + v * z[1]) + u * ((1 - v) * z[2] + v * z[3])
    north, east = [mpf(z) for z in ("-4", "-2.5", "3.25", "5")], [mpf(z) for z in ("2", "-1.5", "4.75", "-3")]
    return [b + at(north) * SEC, l + at(east) * SEC, h]


def geoid(b, l, h):
    return [b, l, h - (44 + 20 * sin(30 * b) * cos(20 * l))]


def site(n, e, h):
    s, theta = mpf("1.00002"), mpf("0.3")
    return [s * (cos(theta) * n - sin(theta) * e), s * (sin(theta) * n + cos(theta) * e),
            h + mpf("2e-5") * n - mpf("1e-5") * e]


def ground(n, e, h):
    k, theta = mpf("1.0003"), mpf("0.01")
    return [k * (cos(theta) * n - sin(theta) * e), k * (sin(theta) * n + cos(theta) * e), h]


def affine(n, e, h):
    return [mpf("1e-4") * e + mpf("0.9998") * n, mpf("1.0001") * e + mpf("2e-4") * n, h]


def jacobian(step, p):
    j = matrix(3, 3)
    for column in range(3):
        order = tuple(int(k == column) for k in range(3))
        for row in range(3):
            j[row, column] = diff(lambda *x: step(*x)[row], tuple(p), order)
    return j


def product(steps, p):
    total, p = mp.eye(3), list(p)
    for step in steps:
        total = jacobian(step, p) * total
        p = step(*p)
    return total, p


def scaled(j, at, to=None):
    """From derivatives by radians to those by metres, and to metres where there is no projection."""
    j = j.copy()
    for row in range(3):
        for column in range(3):
            j[row, column] *= (to[row] if to else 1) / at[column]
    return j


POINT = [mpf(0.842), mpf(0.161), mpf(412)]
UTM = transverse_mercator(GRS80, 9 * DEG, mpf("0.9996"))
GAUSS = transverse_mercator(BESSEL, 9 * DEG, mpf(1))
CONE = lambert(BESSEL, 46 * DEG, 49 * DEG, mpf(0.2))
TO_BESSEL = [to_geocentric(GRS80), datum, to_geographic(BESSEL)]
CHAINS = [
    ("transverse Mercator and ground", [UTM, ground]),
    ("datum", TO_BESSEL),
    ("datum and transverse Mercator", TO_BESSEL + [GAUSS]),
    ("geoid and transverse Mercator", [geoid, UTM]),
    ("datum, geoid and Lambert", TO_BESSEL + [geoid, CONE]),
    ("oblique Mercator and site", [oblique_mercator(GRS80, 30 * DEG, mpf("0.9998"), 9 * DEG, 47 * DEG), site]),
    ("shift grid and transverse Mercator", [bilinear, GAUSS]),
    ("14 parameters and stereographic",
     [to_geocentric(GRS80), fourteen, to_geographic(GRS80),
      stereographic(GRS80, 48 * DEG, 10 * DEG, mpf("0.9999"))]),
    ("Mercator, affine and site", [mercator(GRS80), affine, site]),
    ("all", TO_BESSEL + [geoid, GAUSS, affine, site, ground]),
]


def numbers(c):
    return ", ".join(mp.nstr(c[r, k], 20, min_fixed=0, max_fixed=0) for r in range(3) for k in range(3))


if __name__ == "__main__":
    print("// Printed by make_chain_covariances.py.")
    print("constexpr ExactCovariances kExactCovariances[] = {")
    for name, steps in CHAINS:
        j, end = product(steps, POINT)
        j = scaled(j, metres(GRS80, POINT), metres(BESSEL, end) if name == "datum" else None)
        back = j ** -1
        print(f'    {{"{name}",\n     {{{numbers(j * GIVEN * j.T)}}},\n     {{{numbers(back * GIVEN * back.T)}}}}},')
    print("};")
