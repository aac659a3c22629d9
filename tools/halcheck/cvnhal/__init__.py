"""What an ELF file says of itself and of its interface, and whether two such files fit."""
