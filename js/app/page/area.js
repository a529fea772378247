// Areas of use: { west, south, east, north } in degrees, west above east across the date line.

export function contains({ west, south, east, north }, lat, lon) {
  const within = (degrees) => (west <= east ? degrees >= west && degrees <= east : degrees >= west || degrees <= east);
  const turned = ((lon + 540) % 360) - 180; // the date line is −180, and 180 as well
  return lat >= south && lat <= north && (within(turned) || turned === -180 && within(180));
}

/** Square degrees, to put areas into an order. */
export function extent({ west, south, east, north }) {
  return (east - west + (east < west ? 360 : 0)) * (north - south);
}
