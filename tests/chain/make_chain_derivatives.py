"""Prints chain_derivatives.inc: a datum and Mercator's projection, differentiated in 40 digits."""

from mpmath import mp, mpf, sin, cos, sqrt, pi, matrix, atan2, log, tan, diff

mp.dps = 60
A, IF = mpf(6378137), mpf("298.257222101")
B_A, B_IF = mpf("6377397.155"), mpf("299.1528128")
T = [mpf("598.1"), mpf("73.7"), mpf("418.2")]
R = [mpf(r) * pi / 648000 for r in ("0.202", "0.045", "-2.455")]
S = mpf("6.7e-6")


def e2_of(inv_f):
    f = 1 / inv_f
    return f * (2 - f)


def geocentric(b, l, h):
    e2 = e2_of(IF)
    n = A / sqrt(1 - e2 * sin(b) ** 2)
    return matrix([(n + h) * cos(b) * cos(l), (n + h) * cos(b) * sin(l), (n * (1 - e2) + h) * sin(b)])


def rotation(axis, angle):
    m = mp.eye(3)
    i, j = (axis + 1) % 3, (axis + 2) % 3
    m[i, i] = m[j, j] = cos(angle)
    m[i, j], m[j, i] = -sin(angle), sin(angle)
    return m


TURN = rotation(0, R[0]) * rotation(1, R[1]) * rotation(2, R[2])


def local(b, l, h):
    p = TURN * (geocentric(b, l, h) - matrix(T)) / (1 + S)
    e2, r = e2_of(B_IF), sqrt(p[0] ** 2 + p[1] ** 2)
    phi = atan2(p[2], r * (1 - e2))
    for _ in range(60):
        n = B_A / sqrt(1 - e2 * sin(phi) ** 2)
        phi = atan2(p[2] + e2 * n * sin(phi), r)
    height = r * cos(phi) + p[2] * sin(phi) - B_A * sqrt(1 - e2 * sin(phi) ** 2)
    e = sqrt(e2)
    q = log(tan(pi / 4 + phi / 2) * ((1 - e * sin(phi)) / (1 + e * sin(phi))) ** (e / 2))
    return [B_A * q, B_A * atan2(p[1], p[0]), height]


b, l, h = 48 * pi / 180, 9 * pi / 180, mpf(300)
e2 = e2_of(IF)
w2 = 1 - e2 * sin(b) ** 2
metres = [A * (1 - e2) / w2 ** mpf(1.5) + h, (A / sqrt(w2) + h) * cos(b), mpf(1)]
print("constexpr double kExact[3][3] = {")
for row in range(3):
    partial = []
    for column in range(3):
        order = tuple(int(k == column) for k in range(3))
        partial.append(diff(lambda x, y, z: local(x, y, z)[row], (b, l, h), order) / metres[column])
    print("    {" + ", ".join(mp.nstr(x, 20) for x in partial) + "},")
print("};")
