"""Runs the scanner, unchanged, on machines made of plain files."""
