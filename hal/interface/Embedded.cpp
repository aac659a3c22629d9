// Puts the description of the HAL interface, an ELF file with debugging information, into a section
// that is not loaded.
asm(".pushsection .cvn_hal_interface, \"\", %progbits\n"
    ".incbin \"" CVN_HAL_DESCRIPTION
    "\"\n"
    ".popsection\n");
