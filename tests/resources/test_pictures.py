"""The pictures of the pop-ups: the drawings, and the PNG files that the build made of them."""
import collections
import functools
import struct
import xml.etree.ElementTree as ElementTree
import zlib

from resource_files import built, source

# Name: width and height in pixels.
PICTURES = {
    "i_open": (48, 48),
    "i_close_cancel": (48, 48),
    "noti_source_icon_usb": (96, 96),
    "noti_source_icon_camera": (96, 96),
}
DARK_POPUP = (0x14, 0x16, 0x1A)
LIGHT_POPUP = (0xF4, 0xF5, 0xF7)


@functools.lru_cache(maxsize=None)
def pixels(name):
    """Width, height, and the rows of (red, green, blue, alpha) of a built picture."""
    data = built("images", f"{name}.png").read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", name
    at, packed, header = 8, b"", None
    while at < len(data):
        (size,) = struct.unpack_from(">I", data, at)
        kind, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + size]
        at += 12 + size
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            packed += body
    width, height, depth, colour, _, _, interlace = header
    assert (depth, colour, interlace) == (8, 6, 0), f"{name} is not 8-bit RGBA"

    raw = zlib.decompress(packed)
    stride = 4 * width
    above = bytearray(stride)
    rows = []
    for start in range(0, (stride + 1) * height, stride + 1):
        kind, row = raw[start], bytearray(raw[start + 1 : start + 1 + stride])
        for i in range(stride):
            left = row[i - 4] if i >= 4 else 0
            corner = above[i - 4] if i >= 4 else 0
            estimate = left + above[i] - corner
            nearest = min((left, above[i], corner), key=lambda value, e=estimate: abs(e - value))
            row[i] = (row[i] + (0, left, above[i], (left + above[i]) // 2, nearest)[kind]) % 256
        rows.append([tuple(row[i : i + 4]) for i in range(0, stride, 4)])
        above = row
    return width, height, rows


def solid_colours(name):
    """Opaque colours of a picture, the most frequent first, each with its share of all pixels."""
    width, height, rows = pixels(name)
    count = collections.Counter(pixel[:3] for row in rows for pixel in row if pixel[3] == 255)
    return [(colour, number / (width * height)) for colour, number in count.most_common()]


def contrast(one, other):
    """Contrast ratio of two colours, from 1 to 21, as the accessibility guidelines define it."""

    def luminance(colour):
        linear = [
            value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4
            for value in (part / 255 for part in colour)
        ]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)


def test_every_picture_is_built_in_its_size():
    assert {name: pixels(name)[:2] for name in PICTURES} == PICTURES


def test_no_picture_is_blank():
    for name in PICTURES:
        (_, tile), (_, sign) = solid_colours(name)[:2]
        assert tile > 0.4 and sign > 0.03, f"{name}: tile {tile:.0%}, sign {sign:.0%}"


def test_every_picture_is_transparent_around_its_tile():
    for name in PICTURES:
        width, height, rows = pixels(name)
        corners = [rows[y][x][3] for y in (0, height - 1) for x in (0, width - 1)]
        assert corners == [0, 0, 0, 0], name


def test_every_picture_can_be_read_on_dark_and_on_light_popups():
    for name in PICTURES:
        (tile, _), (sign, _) = solid_colours(name)[:2]
        assert contrast(sign, tile) >= 4.5, f"{name}: sign on tile"
        assert contrast(tile, DARK_POPUP) >= 3, f"{name}: tile on a dark pop-up"
        assert contrast(tile, LIGHT_POPUP) >= 3, f"{name}: tile on a light pop-up"


def test_no_two_pictures_are_alike():
    buttons = ("i_open", "i_close_cancel")
    sources = ("noti_source_icon_usb", "noti_source_icon_camera")
    for names in (buttons, sources):
        one, other = (pixels(name)[2] for name in names)
        differing = sum(a != b for row, line in zip(one, other) for a, b in zip(row, line))
        assert differing > len(one) * len(one) / 10, names


def test_all_pictures_share_grid_tile_and_stroke():
    svg = "{http://www.w3.org/2000/svg}"
    for name in PICTURES:
        root = ElementTree.parse(source("images", f"{name}.svg")).getroot()
        assert root.get("viewBox") == "0 0 96 96", name
        tile = root.find(f"{svg}rect")
        assert [tile.get(key) for key in ("x", "y", "width", "height", "rx")] == [
            "4", "4", "88", "88", "22",
        ], name  # fmt: skip
        strokes = [part.get("stroke-width") for part in root if part.get("stroke")]
        assert strokes == ["6"], name
