// Published coordinates. Position in degrees, then northing and easting as printed; `within` is half a
// unit of the last printed place, or what the source says of its own rounding.

const dms = (d, m, s) => d + m / 60 + s / 3600;
const clarke1866 = [6378206.4, 294.9786982138982], bessel = [6377397.155, 299.1528128], grs80 = [6378137, 298.257222101];

export const projections = [
  {
    name: "LC", ellipsoid: clarke1866,
    parameters: { southLat: 33, northLat: 45, lon0: -96, lat0: 23, east0: 0, north0: 0, scale: 1 },
    points: [{ source: "Snyder 1987, appendix A", at: [35, -75], grid: [1564649.5, 1894410.9], within: 0.05 }],
  },
  {
    name: "LC", ellipsoid: clarke1866,
    parameters: { southLat: 18, northLat: 18, lon0: -77, lat0: 18, east0: 250000, north0: 150000, scale: 1 },
    points: [{ source: "IOGP 373-07-02, Jamaica", at: [dms(17, 55, 55.8), -dms(76, 56, 37.26)], grid: [142493.51, 255966.58], within: 0.005 }],
  },
  {
    name: "TMERC", ellipsoid: [6377563.396, 299.3249646],
    parameters: { centralMeridian: -2, scale: 0.9996012717, lat0: 49, east0: 400000, north0: -100000 },
    points: [{ source: "Ordnance Survey, guide to coordinate systems", at: [dms(52, 39, 27.2531), dms(1, 43, 4.5177)], grid: [313177.27, 651409.903], within: 0.0015 }],
  },
  {
    name: "TMERC", ellipsoid: grs80,
    parameters: { centralMeridian: 147, scale: 0.9996, lat0: 0, east0: 500000, north0: 10000000 },
    points: [{ source: "GDA technical manual, Flinders Peak", at: [-dms(37, 57, 3.7203), dms(144, 25, 29.5244)], grid: [5796489.777, 273741.297], within: 0.002 }],
  },
  {
    name: "AlbersConic", ellipsoid: clarke1866,
    parameters: { southLat: 29.5, northLat: 45.5, lon0: -96, lat0: 23, east0: 0, north0: 0 },
    points: [{ source: "Snyder 1987, appendix A", at: [35, -75], grid: [1535925, 1885472.7], within: 0.05 }],
  },
  {
    name: "STER", ellipsoid: clarke1866,
    parameters: { lat0: 40, lon0: -100, scale: 0.9999, east0: 0, north0: 0 },
    points: [{ source: "Snyder 1987, appendix A", at: [30, -90], grid: [-1063049.3, 971630.8], within: 0.05 }],
  },
  {
    name: "DSTER", ellipsoid: bessel,
    parameters: { lat0: dms(52, 9, 22.178), lon0: dms(5, 23, 15.5), scale: 0.9999079, east0: 155000, north0: 463000 },
    points: [{ source: "IOGP 373-07-02", at: [53, 6], grid: [557057.739, 196105.283], within: 5e-4 }],
  },
];

// World Magnetic Model 2010, technical report (Maus et al. 2010), test values: X, Y, Z, H, F in nT to 0.1,
// inclination and declination in degrees to 0.01. Heights are metres.
export const magnetic = [
  { date: 2010, at: [80, 0, 0], field: { x: 6649.5, y: -714.6, z: 54346.2, h: 6687.8, f: 54756.2, inclination: 82.98, declination: -6.13 } },
  { date: 2010, at: [0, 120, 0], field: { x: 39428.8, y: 664.9, z: -11683.8, h: 39434.5, f: 41128.9, inclination: -16.5, declination: 0.97 } },
];
