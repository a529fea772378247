// Areas of use: { west, south, east, north } in degrees, west above east across the date line.

export function contains({ west, south, east, north }, lat, lon) {
  const turned = ((lon + 540) % 360) - 180;
  const within = west <= east ? turned >= west && turned <= east : turned >= west || turned <= east;
  return within && lat >= south && lat <= north;
}

/** Square degrees, to put areas into an order. */
export function extent({ west, south, east, north }) {
  return (east - west + (east < west ? 360 : 0)) * (north - south);
}
