// The page's own pictures: strokes on a field of 24 units, drawn in the colour of the text around.

import { svg } from "/dom.js";

const STROKES = {
  usb: ["M8 11h8v6a4 4 0 0 1-8 0z", "M9.5 11V4h5v7", "M11 7v.5M13 7v.5"],
  camera: ["M4 8h3l1.5-2.5h7L17 8h3v11H4z", "M12 10a3.2 3.2 0 1 0 0 6.4a3.2 3.2 0 0 0 0-6.4z"],
  disk: ["M4 6h16v12H4z", "M4 14h16", "M16 16.2h1"],
  play: ["M8 5v14l11-7z"],
  folder: ["M3 7a2 2 0 0 1 2-2h4l2 2.5h8a2 2 0 0 1 2 2V17a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2z"],
  photo: ["M4 5h16v14H4z", "M4 16l4.5-4.5L13 16l3-3l4 3.5", "M15.5 8.5v.1"],
  film: ["M4 5h16v14H4z", "M8 5v14M16 5v14", "M4 9.5h4M4 14.5h4M16 9.5h4M16 14.5h4"],
  song: ["M9 17.5V6l10-2v11.5", "M9 17.5a2.5 2.5 0 1 1-5 0a2.5 2.5 0 0 1 5 0z", "M19 15.5a2.5 2.5 0 1 1-5 0a2.5 2.5 0 0 1 5 0z"],
  shop: ["M4 10v9h16v-9", "M3 10l2-5h14l2 5z", "M9.5 19v-5h5v5"],
  app: ["M5 5h6v6H5zM13 5h6v6h-6zM5 13h6v6H5zM13 13h6v6h-6z"],
  up: ["M6 14l6-6l6 6"],
  down: ["M6 10l6 6l6-6"],
  left: ["M14 6l-6 6l6 6"],
  right: ["M10 6l6 6l-6 6"],
  back: ["M9 7L4 12l5 5", "M4 12h10a5 5 0 0 1 5 5v1"],
  home: ["M4 11.5L12 5l8 6.5", "M6.5 10v9h11v-9"],
  power: ["M12 4v8", "M7 7a7.5 7.5 0 1 0 10 0"],
  moon: ["M19 14.5A8 8 0 0 1 9.5 5a8 8 0 1 0 9.5 9.5z"],
  sun: ["M12 8.5a3.5 3.5 0 1 0 0 7a3.5 3.5 0 0 0 0-7z", "M12 3v2M12 19v2M3 12h2M19 12h2M5.6 5.6L7 7M17 17l1.4 1.4M5.6 18.4L7 17M17 7l1.4-1.4"],
  auto: ["M12 4a8 8 0 1 0 0 16z", "M12 4a8 8 0 0 1 0 16"],
  eject: ["M6 14l6-8l6 8z", "M6 18h12"],
  bolt: ["M13 3L5 14h6l-1 7l8-11h-6z"],
  mount: ["M12 4v11", "M7.5 11l4.5 4.5l4.5-4.5", "M5 20h14"],
  step: ["M5 5v14l9-7z", "M18 5v14"],
  pause: ["M8 5v14M16 5v14"],
  copy: ["M9 9h11v11H9z", "M15 9V4H4v11h5"],
  trash: ["M5 7h14", "M9 7V4.5h6V7", "M7 7l1 13h8l1-13"],
  record: ["M12 6a6 6 0 1 0 0 12a6 6 0 0 0 0-12z"],
  stop: ["M7 7h10v10H7z"],
  save: ["M12 4v11", "M7.5 11l4.5 4.5l4.5-4.5", "M5 20h14"],
  open: ["M12 15V4", "M7.5 8.5L12 4l4.5 4.5", "M5 20h14"],
  grow: ["M14 4h6v6", "M20 4l-7 7", "M10 20H4v-6", "M4 20l7-7"],
  close: ["M6 6l12 12M18 6L6 18"],
  check: ["M5 12.5l4.5 4.5L19 7"],
  out: ["M5 12h13", "M13 7l5 5l-5 5"],
  in: ["M19 12H6", "M11 7l-5 5l5 5"],
  signal: ["M12 11v9", "M12 8v.1", "M8 12a5 5 0 0 1 0-8M16 4a5 5 0 0 1 0 8M5.5 14.5a9 9 0 0 1 0-13M18.5 1.5a9 9 0 0 1 0 13"],
};

/** A picture by name; decoration, so hidden from those who listen. */
export function icon(name) {
  return svg(
    "svg",
    { class: "icon", viewBox: "0 0 24 24", "aria-hidden": "true", focusable: "false" },
    STROKES[name].map((path) => svg("path", { d: path })),
  );
}
