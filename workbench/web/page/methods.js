// The twelve methods on the bus, as far as a form needs to know them. Names and types are those of
// portmeld.interface.xml, which documents them.

const number = (name, start = 0) => ({ name, type: "i", start });
const text = (name, start = "") => ({ name, type: "s", start });
// A client id that is the same as the calling client's number until a person changes it.
const clientId = { name: "client_id", type: "i", start: null };

export const METHODS = [
  { member: "Connect", does: "registers the caller under a client id", takes: [text("plugin_name", "workbench"), clientId] },
  { member: "DisConnect", does: "forgets a client id", takes: [clientId] },
  { member: "RequesAll", does: "lists every device by signals", takes: [clientId] },
  { member: "GetDeviceCount", does: "counts devices; 0 to 3 file system, 6 cameras, else all", takes: [clientId, number("fs_type", -1)] },
  { member: "GetDeviceListByFsType", does: "lists devices with a file system by signals; -1 all", takes: [clientId, number("fs_type", -1)] },
  { member: "SetEnablePopUP", does: "shows or holds back pop-ups of new devices", takes: [{ name: "enable", type: "b", start: true }] },
  { member: "SetPhotoBGMPlayList", does: "adds one item of background music", takes: [text("first", "/music/song.mp3"), text("second", "Song"), text("third", "Artist")] },
  { member: "GetPhotoBGMPlayListItem", does: "tells one item of background music", warns: "An index that is not stored ends the daemon: give one that is.", takes: [number("index", "")] },
  { member: "ClearPhotoBGMPlayList", does: "empties the background music", takes: [] },
  { member: "GetDeviceInfo", does: "registers the caller, nothing else", silent: true, takes: [clientId, text("device_name")] },
  { member: "LaunchPopup", does: "does nothing", silent: true, takes: [text("device_name")] },
  { member: "SwitchToContent", does: "does nothing", silent: true, takes: [] },
];
