"""Makes egm96_degree36.csv and egm96_degree36_points.csv.

Usage: make_egm96_degree36.py COEFFICIENTS ZONALS POINTS

COEFFICIENTS holds lines "n m C S Ccorr Scorr" of EGM96 and its height-anomaly-to-undulation
correction (NASA/GSFC and NIMA 1996, NASA/TP-1998-206861); ZONALS the even zonal terms of the WGS84
normal field, subtracted here; POINTS undulations evaluated in high precision from the same figures.
"""
import csv
import sys
from decimal import Decimal

coefficients, zonals, points = sys.argv[1:]
normal = {int(row["n"]): Decimal(row["C_n0_to_subtract"]) for row in csv.DictReader(open(zonals))}
with open("egm96_degree36.csv", "w") as out:
    out.write("n,m,C,S,Ccorr,Scorr\n")
    for line in open(coefficients):
        n, m, c, s, cc, sc = line.split()
        if m == "0":
            c = f"{Decimal(c) - normal.get(int(n), 0):.15e}"
        out.write(f"{n},{m},{float(c):.15g},{float(s):.15g},{cc},{sc}\n")
with open("egm96_degree36_points.csv", "w") as out:
    out.write("lat_deg,lon_deg,corrected_m,potential_only_m\n")
    for row in csv.DictReader(open(points)):
        out.write(",".join([row["lat_deg"], row["lon_deg"], row["deg36_with_correction_m"],
                            row["deg36_without_correction_m"]]) + "\n")
