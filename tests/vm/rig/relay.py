#!/usr/bin/python3
"""Lets a program in the guest be spoken to as a child process. Usage: relay.py SOCKET [GREETING]

Joins standard input and output with a port that leads into the guest. GREETING is printed first: what the
program there said when the machine was saved. The end of standard input is the program's end.
"""

import os
import socket
import sys
import threading


def main(path, greeting=None):
    """Passes on what comes until either end is gone."""
    guest = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    guest.connect(path)
    if greeting is not None:
        os.write(1, greeting.encode() + b"\n")

    def out():
        while piece := guest.recv(1 << 16):
            os.write(1, piece)
        os._exit(0)

    threading.Thread(target=out, daemon=True).start()
    while piece := os.read(0, 1 << 16):
        guest.sendall(piece)


if __name__ == "__main__":
    main(*sys.argv[1:])
