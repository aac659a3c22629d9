"""What the programs for the PC that are written in Python share."""
