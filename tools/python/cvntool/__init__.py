"""Shared by the PC programs written in Python."""
