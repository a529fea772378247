"""Prints chain_derivatives.inc: a datum and Mercator's projection, differentiated in 40 digits as one."""

from mpmath import diff, mp, mpf

from make_chain_covariances import BESSEL, DEG, GRS80, TO_BESSEL, mercator, metres

AT = (48 * DEG, 9 * DEG, mpf(300))


def local(*position):
    for step in TO_BESSEL + [mercator(BESSEL)]:
        position = step(*position)
    return position


print("// Printed by make_chain_derivatives.py.")
print("constexpr double kExact[3][3] = {")
for row in range(3):
    partial = []
    for column, metre in enumerate(metres(GRS80, AT)):
        order = tuple(int(k == column) for k in range(3))
        partial.append(diff(lambda b, l, h: local(b, l, h)[row], AT, order) / metre)
    print("    {" + ", ".join(mp.nstr(x, 20) for x in partial) + "},")
print("};")
