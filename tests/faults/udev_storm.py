"""Sends more events of udev than a listener that hangs can be kept for; in a network namespace of one's own, as
its administrator. Usage: udev_storm.py PROCESS-ID
"""

import os
import signal
import socket
import sys
import time

UDEV_GROUP = 2
NETLINK_KOBJECT_UEVENT = 15
SIZE = 4096

# A socket holds at most twice this (socket(7)).
with open("/proc/sys/net/core/rmem_max", encoding="ascii") as file:
    EVENTS = 2 * int(file.read()) // SIZE + 1000

listener = int(sys.argv[1])
storm = socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, NETLINK_KOBJECT_UEVENT)
os.kill(listener, signal.SIGSTOP)
while open(f"/proc/{listener}/stat").read().rsplit(")", 1)[1].split()[0] != "T":
    time.sleep(0.01)
for _ in range(EVENTS):
    storm.sendto(b"x" * SIZE, (0, UDEV_GROUP))
os.kill(listener, signal.SIGCONT)
