"""The frame of the benchmarks: what a figure is, how measures are found and run, how the outcome is told.
What is measured lives in ../measures."""
