// The probe's entry: everything it does is done on demand, line by line.
#include "Probe.h"

int main() {
    return runProbe();
}
