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
EVENTS = 40_000

listener = int(sys.argv[1])
storm = socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, NETLINK_KOBJECT_UEVENT)
os.kill(listener, signal.SIGSTOP)
while open(f"/proc/{listener}/stat").read().rsplit(")", 1)[1].split()[0] != "T":
    time.sleep(0.01)
for _ in range(EVENTS):
    storm.sendto(b"x" * 4096, (0, UDEV_GROUP))
os.kill(listener, signal.SIGCONT)
