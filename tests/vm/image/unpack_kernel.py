#!/usr/bin/python3
"""Takes the program out of a compressed kernel image. Usage: unpack_kernel.py VMLINUZ VMLINUX"""

import lzma
import pathlib
import sys

XZ = b"\xfd7zXZ\x00"


def main(image, program):
    """The image is a loader with the xz stream somewhere in it; what follows the stream is padding."""
    content = pathlib.Path(image).read_bytes()
    stream = content[content.index(XZ) :]
    pathlib.Path(program).write_bytes(lzma.LZMADecompressor().decompress(stream))


if __name__ == "__main__":
    main(*sys.argv[1:])
