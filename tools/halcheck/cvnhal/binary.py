"""An ELF file as the loader sees it. Nothing here needs section headers, which a library may lack."""
import struct
from dataclasses import dataclass, field

from elftools.common.exceptions import ELFError
from elftools.elf.dynamic import DynamicSegment
from elftools.elf.elffile import ELFFile

EF_ARM_ABI_FLOAT_HARD, EF_ARM_ABI_FLOAT_SOFT = 0x400, 0x200
ARM_FLOAT_ABIS = {EF_ARM_ABI_FLOAT_HARD: 'hard', EF_ARM_ABI_FLOAT_SOFT: 'soft'}


class Unreadable(Exception):
    """Not an ELF file, or a damaged one. The message is for the user."""


@dataclass
class Binary:
    """`defined` and `undefined` are names of dynamic symbols; `versions` maps a library to the versions needed of it."""
    path: str
    bits: int
    order: str
    machine: str
    float_abi: str  # of 32-bit ARM; empty on other machines, or if not specified
    interpreter: str = ''
    soname: str = ''
    needed: list = field(default_factory=list)
    defined: set = field(default_factory=set)
    undefined: set = field(default_factory=set)
    versions: dict = field(default_factory=dict)


def open_elf(path):
    """An ELFFile, which keeps the file open."""
    try:
        return ELFFile(open(path, 'rb'))  # noqa: SIM115  # read as long as the ELFFile exists
    except OSError as error:
        raise Unreadable(f'{path}: {error.strerror}') from error
    except (ELFError, UnicodeDecodeError, ValueError) as error:
        raise Unreadable(f'{path}: no ELF file, or a damaged one ({error})') from error


def read_binary(path):
    """What the loader sees in the file at `path`."""
    elf = open_elf(path)
    try:
        return _read(path, elf)
    except (ELFError, struct.error, IndexError, KeyError, AttributeError, TypeError, ValueError) as error:
        raise Unreadable(f'{path}: damaged ({error})') from error


def _read(path, elf):
    binary = Binary(path, elf.elfclass, 'little-endian' if elf.little_endian else 'big-endian',
                    elf.get_machine_arch(), _float_abi(elf))
    for segment in elf.iter_segments():
        if segment['p_type'] == 'PT_INTERP':
            binary.interpreter = segment.get_interp_name()
        elif isinstance(segment, DynamicSegment):
            _read_dynamic(elf, segment, binary)
    return binary


def _float_abi(elf):
    if elf['e_machine'] != 'EM_ARM':
        return ''
    return ARM_FLOAT_ABIS.get(elf['e_flags'] & (EF_ARM_ABI_FLOAT_HARD | EF_ARM_ABI_FLOAT_SOFT), '') or _float_attribute(elf)


def _float_attribute(elf):
    """The float ABI from the build attributes, for files linked without the flag."""
    section = elf.get_section_by_name('.ARM.attributes')
    if section is None:
        return ''
    arguments = [attribute.value for part in section.iter_subsections() for scope in part.iter_subsubsections()
                 for attribute in scope.iter_attributes('TAG_ABI_VFP_ARGS')]
    return {0: 'soft', 1: 'hard'}.get(arguments[0] if arguments else 0, '')


def _read_dynamic(elf, segment, binary):
    entries = {}
    for tag in segment.iter_tags():
        if tag.entry.d_tag == 'DT_NEEDED':
            binary.needed.append(tag.needed)
        elif tag.entry.d_tag == 'DT_SONAME':
            binary.soname = tag.soname
        else:
            entries[tag.entry.d_tag] = tag.entry.d_val
    # The section is exact; a hash table does not count undefined symbols if none are defined.
    for symbol in (elf.get_section_by_name('.dynsym') or segment).iter_symbols():
        if not symbol.name or symbol['st_info']['bind'] == 'STB_LOCAL':
            continue
        hidden = symbol['st_other']['visibility'] in ('STV_HIDDEN', 'STV_INTERNAL')
        if symbol['st_shndx'] == 'SHN_UNDEF':
            binary.undefined.add(symbol.name)
        elif not hidden:
            binary.defined.add(symbol.name)
    if 'DT_VERNEED' in entries:
        binary.versions = _version_needs(elf, segment, entries['DT_VERNEED'], entries['DT_VERNEEDNUM'])


def _version_needs(elf, segment, address, count):
    strings = segment._get_stringtable()  # elftools offers no other way without section headers
    order = '<' if elf.little_endian else '>'
    at = next(iter(elf.address_offsets(address)))

    def read(layout, offset):
        elf.stream.seek(offset)
        return struct.unpack(order + layout, elf.stream.read(struct.calcsize(layout)))

    needs = {}
    for _ in range(count):
        _, entries, library, first, following = read('HHIII', at)
        versions = needs.setdefault(strings.get_string(library), [])
        entry = at + first
        for _ in range(entries):
            _, _, _, name, distance = read('IHHII', entry)
            versions.append(strings.get_string(name))
            entry += distance
        at += following
    return needs


def version_definitions(path):
    """The versions that a library defines."""
    elf = open_elf(path)
    section = elf.get_section_by_name('.gnu.version_d')
    if section is None:
        return set()
    return {next(auxiliaries).name for _, auxiliaries in section.iter_versions()}
