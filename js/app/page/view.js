// What of a grid a plan shows: from coordinates to pixels and back.

const kLargestScale = 1e4; // pixels a unit

function boundsOf(north, east) {
  const bounds = { south: Infinity, north: -Infinity, west: Infinity, east: -Infinity };
  for (let i = 0; i < north.length; ++i) {
    if (!Number.isFinite(north[i]) || !Number.isFinite(east[i])) continue;
    bounds.south = Math.min(bounds.south, north[i]);
    bounds.north = Math.max(bounds.north, north[i]);
    bounds.west = Math.min(bounds.west, east[i]);
    bounds.east = Math.max(bounds.east, east[i]);
  }
  return bounds.south <= bounds.north ? bounds : null;
}

/** A part of a grid on a canvas of `width` and `height` pixels. */
export class View {
  width = 0;
  height = 0;
  /** Coordinates of the centre. */
  north = 0;
  east = 0;
  /** Pixels a unit. */
  scale = 1;
  /** 1 where northings grow upwards, and where eastings grow to the right; else −1. */
  up = 1;
  right = 1;

  /** [north, east] at a pixel. */
  at(x, y) {
    return [
      this.north - ((y - this.height / 2) / this.scale) * this.up,
      this.east + ((x - this.width / 2) / this.scale) * this.right,
    ];
  }
  /** [x, y] of a point. */
  pixel(north, east) {
    return [
      this.width / 2 + (east - this.east) * this.scale * this.right,
      this.height / 2 - (north - this.north) * this.scale * this.up,
    ];
  }

  /** Shows all points, `margin` pixels from the edges; false where there are none. */
  fit(north, east, margin) {
    const bounds = boundsOf(north, east);
    if (!bounds) return false;
    const room = [this.height - 2 * margin, this.width - 2 * margin];
    const extent = [bounds.north - bounds.south, bounds.east - bounds.west];
    const scales = room.map((pixels, i) => pixels / extent[i]).filter((each) => Number.isFinite(each) && each > 0);
    this.scale = Math.min(...scales, extent[0] || extent[1] ? kLargestScale : 1);
    this.north = (bounds.north + bounds.south) / 2;
    this.east = (bounds.east + bounds.west) / 2;
    return true;
  }

  /** Brings north up where a turn or a mirror can: `compass` has the directions of true north and east there. */
  orient(compass) {
    const turnable = compass && Math.abs(compass.north[0]) > Math.abs(compass.north[1]);
    this.up = (turnable && Math.sign(compass.north[0])) || 1;
    this.right = (turnable && Math.sign(compass.east[1])) || 1;
  }

  /** Enlarges by a factor; the point at the pixel stays there. */
  zoom(factor, x, y) {
    const [north, east] = this.at(x, y);
    this.scale *= factor;
    const [movedNorth, movedEast] = this.at(x, y);
    this.north += north - movedNorth;
    this.east += east - movedEast;
  }

  /** Moves what is shown by pixels. */
  pan(dx, dy) {
    this.north += (dy / this.scale) * this.up;
    this.east -= (dx / this.scale) * this.right;
  }
}
