"""What is measured: one subject a file. A new file here is found by itself."""
