// The page: its parts, what they tell each other, and the files that are dropped on it.
import { ConvertPanel } from "./convert.js";
import { byId, tell } from "./dom.js";
import { acceptFiles, textOf } from "./files.js";
import { Picker } from "./picker.js";
import { Plan } from "./plan.js";
import { Pointer } from "./pointer.js";
import { SitePanel } from "./site.js";

const kTabs = ["convert", "site"];

const pointer = new Pointer();
let task = "convert";

const plan = new Plan(byId("plan"), {
  onPoint: (north, east) => pointer.show(north, east),
  onGrab: (index, y) => site.grab(index, y),
  onDrop: (index, y) => site.drop(index, y),
  canGrab: () => task === "site",
});
const convert = new ConvertPanel(plan);
const site = new SitePanel(plan, {
  onSite: (system) => {
    select("convert");
    picker.choose(system);
  },
  onChain: (chain, units) => task === "site" && pointer.use(chain, units),
});
const picker = new Picker(async (system) => {
  pointer.use(system?.chain ?? null, system?.units);
  site.use(system?.below ?? null);
  await convert.use(system).catch((error) => tell(error.message));
  redraw();
});

function redraw() {
  if (task === "site") return site.draw();
  pointer.use(picker.system?.chain ?? null, picker.system?.units);
  convert.draw();
}

function select(name) {
  task = name;
  for (const each of kTabs) {
    const tab = byId(`tab-${each}`), chosen = each === name;
    tab.setAttribute("aria-selected", String(chosen));
    tab.tabIndex = chosen ? 0 : -1;
    byId(each).hidden = !chosen;
  }
  byId("results").hidden = name !== "convert";
  byId("site-results").hidden = name !== "site";
  redraw();
}

for (const name of kTabs) {
  byId(`tab-${name}`).addEventListener("click", () => select(name));
  byId(`tab-${name}`).addEventListener("keydown", ({ key }) => {
    if (key !== "ArrowLeft" && key !== "ArrowRight") return;
    const other = kTabs.find((each) => each !== name);
    select(other);
    byId(`tab-${other}`).focus();
  });
}

// What a JSON file is, its text tells.
const kGeoJson = /"type"\s*:\s*"(Feature|FeatureCollection|Point|Multi\w+|LineString|Polygon|GeometryCollection)"/;

const kSuffixes = { json: "json", geojson: "json", csv: "table", txt: "table", tsv: "table", gsb: "grid", gtx: "grid" };

async function kindOf(file) {
  const kind = kSuffixes[file.name.split(".").at(-1).toLowerCase()];
  return kind === "json" ? (kGeoJson.test(await textOf(file)) ? "features" : "system") : kind;
}

async function takeFiles(files) {
  const ofSystem = [];
  for (const file of files) {
    const kind = await kindOf(file);
    if (kind === undefined) tell(`${file.name}: this page reads CSV, GeoJSON, system files (JSON) and grids (.gsb, .gtx).`);
    else if (kind === "grid" || kind === "system") ofSystem.push(file);
    else await openPoints(file, kind);
    if (/\.gtx$/i.test(file.name)) pointer.takeGeoid(await file.arrayBuffer(), file.name);
  }
  if (ofSystem.length) await picker.takeFiles(ofSystem);
}

async function openPoints(file, kind) {
  const text = await textOf(file);
  if (kind === "table" && task === "site") return site.open(text, file.name);
  select("convert");
  await convert.open(text, file.name, kind);
}

const taking = (files) => takeFiles(files).catch((error) => tell(error.message));
for (const name of ["system", "points", "control"]) acceptFiles(byId(`${name}-drop`), byId(`${name}-file`), taking);
addEventListener("dragover", (event) => event.preventDefault());
addEventListener("drop", (event) => {
  event.preventDefault();
  if (!event.target.closest(".drop")) taking([...event.dataTransfer.files]);
});

byId("zoom-in").addEventListener("click", () => plan.zoomIn());
byId("zoom-out").addEventListener("click", () => plan.zoomOut());
byId("zoom-fit").addEventListener("click", () => plan.fit());

async function workOffline() {
  if (!("serviceWorker" in navigator)) {
    byId("offline").textContent = "Works while it is open; to install it, open it by https or on this machine.";
    return;
  }
  await navigator.serviceWorker.register("service_worker.js", { updateViaCache: "none" });
  await navigator.serviceWorker.ready;
  byId("offline").textContent = "Ready to work offline";
}

await picker.load().catch((error) => tell(error.message));
document.documentElement.dataset.ready = "yes";
workOffline().catch((error) => (byId("offline").textContent = `Not installed for offline work: ${error.message}`));
