"""Machines for measures: sticks that can be plugged, and mounts that nobody else sees."""
