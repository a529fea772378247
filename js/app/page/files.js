// Files in and out: chosen, dropped, downloaded. None of them leaves the machine.

/** The last part of a path, in small letters: names of grids agree without their folders. */
export const baseName = (path) => path.split(/[\\/]/).at(-1).toLowerCase();

/** Calls `take(files)` for what is dropped on an element or chosen by its input. */
export function acceptFiles(zone, input, take) {
  const over = (event) => {
    event.preventDefault();
    zone.classList.toggle("over", event.type === "dragover");
  };
  for (const type of ["dragover", "dragleave", "drop"]) zone.addEventListener(type, over);
  zone.addEventListener("drop", (event) => take([...event.dataTransfer.files]));
  input.addEventListener("change", () => {
    const files = [...input.files];
    input.value = ""; // the same file can be chosen again
    take(files);
  });
}

/** UTF-8, or what older instruments write. */
export async function textOf(file) {
  const bytes = await file.arrayBuffer();
  try {
    return new TextDecoder("utf-8", { fatal: true }).decode(bytes);
  } catch {
    return new TextDecoder("windows-1252").decode(bytes);
  }
}

/** Hands a text to the user as a file. */
export function download(name, text, type) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([text], { type }));
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}
