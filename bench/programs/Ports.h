// USB ports that hold as many sticks as are wanted.
#pragma once

/// Have this many sticks attached. They share that many product names: 1 for all alike.
void plugSticks(int count, int products);

/// Send the event that the last stick was removed. False when nobody listens to events (yet).
bool pullLastStick();
