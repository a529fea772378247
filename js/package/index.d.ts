/**
 * Geodetic mathematics for surveying and mapping.
 *
 * Angles are degrees, radians with `{ degrees: false }`; lengths are metres. Pairs are (latitude, longitude) or
 * (north, east), unless a projection has other axes. Numbers give numbers; arrays of equal length give
 * `Float64Array`s, and a number beside them stands for an array of it. A point that fails is NaN in every result
 * and throws nothing; latitudes beyond 90 and longitudes beyond 360 degrees fail everywhere. A description that
 * makes no sense throws `GeomathError`.
 *
 * Objects do not change. Their memory is freed with them, or at once by `dispose()`.
 */

/** Which of its two modules the package runs on: the scalar one where the engine has no SIMD. */
export const engine: "simd" | "scalar";

/** Thrown for what makes no sense; the message says what would be right. */
export class GeomathError extends Error {}

/** Coordinates of many points. Those of a `Float64Array` are copied fastest. */
export type Column = ArrayLike<number>;
export type Bytes = ArrayBuffer | ArrayBufferView | string;

export interface Options<Out> {
  /** Angles are degrees (true, the default) or radians. */
  degrees?: boolean;
  /** Arrays that take the results: those of the arguments, for a conversion in place, or others. */
  out?: Out;
}
export type One = Float64Array;
export type Two = [Float64Array, Float64Array];
export type Three = [Float64Array, Float64Array, Float64Array];

/** An object of the module. */
declare class Native {
  protected constructor();
  /** Its properties as one plain object. */
  describe(): Record<string, unknown>;
  /** Frees its memory; it cannot be used any more. */
  dispose(): void;
}

/** The projections by name: from the name of each parameter to what it is and its unit. */
export function projections(): Record<string, Record<string, string>>;
/** The names that `Ellipsoid` knows, in any letter case. */
export function ellipsoidNames(): string[];
/** The step of a chain at which a point failed, in words: "the geoid"; "none" for 0. */
export function chainStepText(step: number): string;

/** A reference ellipsoid of revolution. */
export class Ellipsoid extends Native {
  /** By name, or by semi-major axis and inverse flattening (or semi-minor axis), metres. */
  constructor(name: string);
  constructor(a: number, invF: number);
  constructor(axes: { a: number; invF?: number; b?: number });
  readonly a: number;
  readonly b: number;
  /** Inverse flattening; Infinity of a sphere. */
  readonly invF: number;
  readonly f: number;
  readonly n: number;
  readonly e: number;
  readonly e2: number;
  readonly ep2: number;
  /** Geodetic to earth-centred coordinates: [x, y, z]. */
  toGeocentric(lat: number, lon: number, h?: number, options?: Options<undefined>): [number, number, number];
  toGeocentric(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<Three>): Three;
  /** Earth-centred to geodetic coordinates: [lat, lon, h], exact to rounding everywhere. */
  toGeodetic(x: number, y: number, z: number, options?: Options<undefined>): [number, number, number];
  toGeodetic(x: Column | number, y: Column | number, z: Column | number, options?: Options<Three>): Three;
}

export interface SevenParameters {
  /** Metres, from the local datum to WGS84. */
  dx?: number;
  dy?: number;
  dz?: number;
  /** Arc-seconds. */
  rx?: number;
  ry?: number;
  rz?: number;
  /** The scale minus 1, times a million. */
  ppm?: number;
  /** The sense of the published rotations: EPSG method 1032 (the default) or 1033. */
  rotation?: "coordinate-frame" | "position-vector";
}

/** A local datum: an ellipsoid and the seven parameters from its earth-centred frame to WGS84. */
export class Datum extends Native {
  constructor(ellipsoid: Ellipsoid | string, parameters?: SevenParameters);
  readonly shift: [number, number, number];
  /** Arc-seconds, in the coordinate-frame sense. */
  readonly rotation: [number, number, number];
  readonly ppm: number;
  toWgs84(x: number, y: number, z: number): [number, number, number];
  toWgs84(x: Column | number, y: Column | number, z: Column | number, options?: Options<Three>): Three;
  fromWgs84(x: number, y: number, z: number): [number, number, number];
  fromWgs84(x: Column | number, y: Column | number, z: Column | number, options?: Options<Three>): Three;
}

export interface Distortion<T> {
  meridianScale: T;
  parallelScale: T;
  arealScale: T;
  convergence: T;
  angularDistortion: T;
  semiMajor: T;
  semiMinor: T;
}

/**
 * A map projection by its short name and all of its parameters (see `projections()`): degrees, metres, factors.
 * `gridAxes` and `geographicAxes` say in which directions a pair counts, such as "NE", "EN" or "SW".
 */
export class Projection extends Native {
  constructor(
    name: string,
    parameters: {
      ellipsoid?: Ellipsoid | string;
      gridAxes?: string;
      geographicAxes?: string;
      [parameter: string]: Ellipsoid | number | string | undefined;
    },
  );
  readonly name: string;
  readonly parameters: Record<string, number>;
  readonly gridAxes: string;
  readonly geographicAxes: string;
  /** To the grid: [north, east]. */
  forward(lat: number, lon: number, options?: Options<undefined>): [number, number];
  forward(lat: Column | number, lon: Column | number, options?: Options<Two>): Two;
  /** From the grid: [lat, lon]. */
  inverse(north: number, east: number, options?: Options<undefined>): [number, number];
  inverse(north: Column | number, east: Column | number, options?: Options<Two>): Two;
  /** [scale, convergence] at a position; azimuth = bearing + convergence. */
  factors(lat: number, lon: number, options?: Options<undefined>): [number, number];
  factors(lat: Column | number, lon: Column | number, options?: Options<Two>): Two;
  /** What the projection does to lengths, angles and areas at a position. */
  distortion(lat: number, lon: number, options?: Options<undefined>): Distortion<number>;
  distortion(lat: Column | number, lon: Column | number, options?: Options<undefined>): Distortion<Float64Array>;
}

/** A site calibration: from the grid of a projection to the plane and heights of a site. */
export class LocalToGrid extends Native {
  /** Metres, degrees, metres of height a metre. A part, plane or heights, that is left out changes nothing. */
  constructor(parameters: {
    shiftN?: number;
    shiftE?: number;
    scale?: number;
    rotation?: number;
    shiftH?: number;
    slopeN?: number;
    slopeE?: number;
  });
  readonly shiftN?: number;
  readonly shiftE?: number;
  readonly scale?: number;
  readonly rotation?: number;
  readonly shiftH?: number;
  readonly slopeN?: number;
  readonly slopeE?: number;
  toLocal(north: number, east: number, h?: number): [number, number, number];
  toLocal(north: Column | number, east: Column | number, h?: Column | number, options?: Options<Three>): Three;
  toGrid(north: number, east: number, h?: number): [number, number, number];
  toGrid(north: Column | number, east: Column | number, h?: Column | number, options?: Options<Three>): Three;
}

/** From grid coordinates to true lengths on the ground; `scale`, or the two that it is derived from. */
export class GridToGround extends Native {
  constructor(parameters: {
    scale?: number;
    height?: number;
    gridScaleFactor?: number;
    rotation?: number;
    originN?: number;
    originE?: number;
    offsetN?: number;
    offsetE?: number;
    enabled?: boolean;
  });
  readonly scale: number;
  readonly height: number;
  readonly gridScaleFactor: number;
  readonly rotation: number;
  readonly originN: number;
  readonly originE: number;
  readonly offsetN: number;
  readonly offsetE: number;
  readonly enabled: boolean;
  toGround(north: number, east: number): [number, number];
  toGround(north: Column | number, east: Column | number, options?: Options<Two>): Two;
  toGrid(north: number, east: number): [number, number];
  toGrid(north: Column | number, east: Column | number, options?: Options<Two>): Two;
}

/** What a chain takes as its geoid. */
declare class Geoid extends Native {
  /** Height above the ellipsoid, metres; NaN outside a grid and at a hole. */
  height(lat: number, lon: number, options?: Options<undefined>): number;
  height(lat: Column | number, lon: Column | number, options?: Options<One>): One;
}

/** Geoid heights interpolated in a regular grid of latitude and longitude. */
export class RegionalGeoid extends Geoid {
  constructor(parts: {
    /** Rows along latitude, from the south unless `northFirst`, each from the west; NaN is a hole. */
    grid: ArrayLike<number>;
    rows: number;
    columns: number;
    /** Of the south-western node, degrees, as the steps are. */
    south: number;
    west: number;
    latStep: number;
    lonStep: number;
    /** The class name of a scheme, such as "RegGeoidIntrpSpline4x4SW"; bilinear by default. */
    interpolation?: string;
    northFirst?: boolean;
  });
  /** A grid in the GTX format. */
  static fromGtx(data: Bytes, options?: { interpolation?: string; name?: string }): RegionalGeoid;
  readonly south: number;
  readonly west: number;
  readonly latStep: number;
  readonly lonStep: number;
  readonly rows: number;
  readonly columns: number;
  readonly interpolation: string;
}

/** A spherical-harmonic model: fully normalised coefficients, degree after degree, in each the orders from 0. */
export class GlobalGeoid extends Geoid {
  constructor(coefficients: { cosines: Column; sines: Column; correctionCosines?: Column; correctionSines?: Column });
  readonly maxDegree: number;
}

/** A grid of shifts between two systems. */
export class ShiftGrid extends Native {
  protected constructor();
  /** From the bytes of an NTv2 file (.gsb); `name` stands for it in messages. */
  static fromNtv2(data: Bytes, options?: { name?: string }): ShiftGrid;
  /** From the source to the target system: [lat, lon, h]. */
  forward(lat: number, lon: number, h?: number, options?: Options<undefined>): [number, number, number];
  forward(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<Three>): Three;
  /** The position that `forward` takes there. */
  inverse(lat: number, lon: number, h?: number, options?: Options<undefined>): [number, number, number];
  inverse(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<Three>): Three;
}

export interface ChainParts {
  /** WGS84 where there is a datum. */
  globalEllipsoid?: Ellipsoid;
  datum?: Datum;
  /** The height at which positions go through the datum, metres. */
  fixedHeight?: number;
  projection?: Projection;
  geoid?: RegionalGeoid | GlobalGeoid;
  /** To which ellipsoid the heights of the geoid belong. */
  geoidFrame?: "global" | "local";
  localization?: LocalToGrid;
  ground?: GridToGround;
  /** Metres of one unit of local north and east, and of local heights. */
  unit?: number;
  heightUnit?: number;
  /** The date of positions that come without one, a decimal year. */
  epoch?: number;
}

export interface ChainOptions<Out> extends Options<Out> {
  /** The date of the positions, for chains with a frame that moves: a decimal year, or one for each point. */
  epoch?: number | Column;
}
export interface StepOptions<Out> extends ChainOptions<Out> {
  /** A further result: the step that refused each point (see `chainStepText`), 0 for none. */
  steps?: boolean;
}

/** A whole conversion as one object: global latitude, longitude and height to the local grid, and back. */
export class CoordinateChain extends Native {
  /** Steps that are left out are not done. */
  constructor(parts?: ChainParts);
  /**
   * From a system file, as text or as its object. `files` holds the bytes of what it names: shift grids in NTv2,
   * geoids in GTX. `name` stands for it in messages.
   */
  static fromSystem(
    system: string | object,
    options?: { files?: Record<string, Bytes>; name?: string },
  ): CoordinateChain;
  readonly unit: number;
  readonly heightUnit: number;
  /** Whether a frame moves, so that positions need a date. */
  readonly needsEpoch: boolean;
  readonly projection?: { name: string; parameters: Record<string, number> };
  /** [north, east, height] */
  toLocal(lat: number, lon: number, h: number, options: { steps: true; degrees?: boolean; epoch?: number }): [number, number, number, number];
  toLocal(lat: number, lon: number, h?: number, options?: ChainOptions<undefined>): [number, number, number];
  toLocal(lat: Column | number, lon: Column | number, h: Column | number, options: StepOptions<Three> & { steps: true }): [...Three, Uint8Array];
  toLocal(lat: Column | number, lon: Column | number, h?: Column | number, options?: ChainOptions<Three>): Three;
  /** [lat, lon, height] */
  toGlobal(north: number, east: number, h: number, options: { steps: true; degrees?: boolean; epoch?: number }): [number, number, number, number];
  toGlobal(north: number, east: number, h?: number, options?: ChainOptions<undefined>): [number, number, number];
  toGlobal(north: Column | number, east: Column | number, h: Column | number, options: StepOptions<Three> & { steps: true }): [...Three, Uint8Array];
  toGlobal(north: Column | number, east: Column | number, h?: Column | number, options?: ChainOptions<Three>): Three;
}

/** Columns of equal length; NaN or null is a coordinate that a point does not have. */
export interface Control {
  /** Degrees and metres. */
  lat: ArrayLike<number | null>;
  lon: ArrayLike<number | null>;
  h?: ArrayLike<number | null>;
  /** In the units of the chain. */
  localN: ArrayLike<number | null>;
  localE: ArrayLike<number | null>;
  localH?: ArrayLike<number | null>;
  name?: ArrayLike<string | number | null>;
  /** "none", "vertical", "horizontal", "both", "rotation"; without it a point is used for what it has. */
  use?: ArrayLike<string | number | null>;
}

/** Control points of a site, to be solved for a LocalToGrid. */
export class Calibration {
  /** Without a chain, or a projection in it, the site gets a stereographic projection of its own. */
  constructor(control: Control, chain?: CoordinateChain, options?: { fixedScale?: boolean; centreOnFirst?: boolean });
  solve(): CalibrationResult;
}

/** North, east and height of each point; null where there is nothing to say. */
export type Table = [number | null, number | null, number | null][];

export interface CalibrationResult extends Native {
  readonly localization: LocalToGrid;
  /** The whole conversion, with the site at its end. */
  readonly chain: CoordinateChain;
  readonly names: string[];
  /** Which points are used horizontally, and for the heights. */
  readonly horizontal: boolean[];
  readonly vertical: boolean[];
  /** Given minus computed, metres; over its standard deviation; and from a calibration on all other points. */
  readonly residuals: Table;
  readonly standardised: Table;
  readonly predicted: Table;
  /** Root mean square of the horizontal residuals, metres. */
  readonly rms: number | null;
  /** Standard deviations of one local coordinate and of one height, metres. */
  readonly horizontalSigma: number | null;
  readonly verticalSigma: number | null;
  /** Standard deviations of the parameters: metres, degrees, metres a metre. */
  readonly deviations: Record<string, number | null>;
  /** Index of the point that the others predict worst. */
  readonly worstHorizontal: number | null;
  readonly worstVertical: number | null;
  /** What is weak about the calibration, a sentence each. */
  readonly warnings: string[];
}

/** A magnetic model, or several of years that follow each other. */
export class MagneticModel extends Native {
  /** A built-in one by name, such as "WMM-2010"; without it all built-in ones. */
  constructor(name?: string);
  /** From the bytes of a coefficient file: .COF, SHDF or .shc, which its name says. */
  static fromFile(data: Bytes, name: string): MagneticModel;
  readonly name: string;
  /** First and last of its years, decimal. */
  readonly epoch: number;
  readonly end: number;
  field(date: Date | string | number): MagneticField;
}

export interface MagneticElements<T> {
  /** North, east, down, horizontal and total, nT. */
  x: T;
  y: T;
  z: T;
  h: T;
  f: T;
  declination: T;
  inclination: T;
  gridVariation: T;
}

/** The magnetic field at one date: a Date (its day in UTC), "2026-05-31" or a decimal year. Heights are metres. */
export class MagneticField extends Native {
  constructor(date: Date | string | number, model?: MagneticModel);
  readonly model: string;
  readonly decimalYear: number;
  /** Says when the date is outside the years of the model; else empty. */
  readonly warning: string;
  /** From true north to magnetic north, east positive. */
  declination(lat: number, lon: number, h?: number, options?: Options<undefined>): number;
  declination(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<One>): One;
  elements(lat: number, lon: number, h?: number, options?: Options<undefined>): MagneticElements<number>;
  elements(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<undefined>): MagneticElements<Float64Array>;
  /** How much the elements change in a year. */
  yearlyChange(lat: number, lon: number, h?: number, options?: Options<undefined>): MagneticElements<number>;
  yearlyChange(lat: Column | number, lon: Column | number, h?: Column | number, options?: Options<undefined>): MagneticElements<Float64Array>;
}
