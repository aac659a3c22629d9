"""Reads result directories of cvntester, merges and compares runs, and shows them."""
VERSION = '1.0.0'
