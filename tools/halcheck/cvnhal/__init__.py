"""What an ELF file reveals about itself and its interface, and whether two such files fit."""
