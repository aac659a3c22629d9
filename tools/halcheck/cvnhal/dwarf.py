"""Reads an interface from debugging information (DWARF)."""
import io
import os

from elftools.common.exceptions import DWARFError, ELFError
from elftools.elf.elffile import ELFFile

from .binary import open_elf
from .model import Array, Base, Enumeration, Field, Function, Interface, Pointer, Record, Void

SECTION = '.cvn_hal_interface'  # of the program: an ELF file with the debugging information of the HAL's headers
BUILD_ID_DIRECTORY = '/usr/lib/debug/.build-id'

KINDS = {2: 'boolean', 3: 'complex', 4: 'float', 5: 'signed', 6: 'signed', 7: 'unsigned', 8: 'unsigned', 16: 'character'}
RECORDS = ('DW_TAG_structure_type', 'DW_TAG_class_type', 'DW_TAG_union_type')
TRANSPARENT = ('DW_TAG_typedef', 'DW_TAG_const_type', 'DW_TAG_volatile_type', 'DW_TAG_restrict_type',
               'DW_TAG_atomic_type', 'DW_TAG_packed_type', 'DW_TAG_shared_type')
POINTERS = ('DW_TAG_pointer_type', 'DW_TAG_reference_type', 'DW_TAG_rvalue_reference_type')
POINTER_VARIABLES = 'cvn_'  # before the names of functions in the program's description

# elftools reads files of any origin and reports in many ways that one is damaged or too new.
UNREADABLE = (DWARFError, ELFError, NotImplementedError, KeyError, IndexError, AttributeError, TypeError, ValueError,
              AssertionError, RecursionError, OSError, EOFError)


class NotDescribed(Exception):
    """There is no usable debugging information. The message says why."""


def described_by_program(path):
    """The interface for which the program at `path` was built."""
    section = open_elf(path).get_section_by_name(SECTION)
    if section is None:
        raise NotDescribed(f'{path} has no description of its HAL interface (section {SECTION})')
    return _read(ELFFile(io.BytesIO(section.data())), path)


def described_by_library(path, debug_file=None):
    """The interface of the library at `path`, from the library or from the file with its debugging information."""
    elf = open_elf(path)
    for candidate in [debug_file] if debug_file else [path, *_debug_files(elf, path)]:
        if os.path.exists(candidate):
            source = open_elf(candidate)
            if source.get_section_by_name('.debug_info') or source.get_section_by_name('.zdebug_info'):
                return _read(source, candidate)
    raise NotDescribed(f'{debug_file or path} has no debugging information')


def _debug_files(elf, path):
    """The places where debuggers look for the debugging information of a stripped file."""
    note = elf.get_section_by_name('.note.gnu.build-id')
    for entry in note.iter_notes() if note else []:
        if entry['n_type'] == 'NT_GNU_BUILD_ID':
            yield f'{BUILD_ID_DIRECTORY}/{entry["n_desc"][:2]}/{entry["n_desc"][2:]}.debug'
    link = elf.get_section_by_name('.gnu_debuglink')
    if link:
        name = link.data().split(b'\0')[0].decode(errors='replace')
        directory = os.path.dirname(os.path.abspath(path))
        yield from (f'{directory}/{name}', f'{directory}/.debug/{name}', f'/usr/lib/debug{directory}/{name}')


def _read(elf, path):
    try:
        return _Reader(elf.get_dwarf_info()).interface()
    except UNREADABLE as error:
        raise NotDescribed(f'{path}: debugging information that cannot be read ({error or type(error).__name__})') from error


def _text(die, attribute):
    value = die.attributes.get(attribute)
    return value.value.decode(errors='replace') if value else ''


def _number(die, attribute, default=0):
    value = die.attributes.get(attribute)
    return value.value if value and isinstance(value.value, int) else default


class _Reader:
    """`types` stores each type description once, by its offset."""

    def __init__(self, dwarf):
        self.dwarf = dwarf
        self.types = {}
        self.found = Interface()

    def interface(self):
        for unit in self.dwarf.iter_CUs():
            top = unit.get_top_DIE()
            if not any(child.tag.endswith('_type') for child in top.iter_children()):
                continue  # line tables only (-g1), or the description is in another file (split)
            for die in top.iter_children():
                self._take(die)
        self._complete()
        return self.found

    def _take(self, die):
        name = _text(die, 'DW_AT_name')
        if die.tag == 'DW_TAG_subprogram':
            if 'DW_AT_external' in die.attributes and 'DW_AT_declaration' not in die.attributes and name:
                self.found.functions[_text(die, 'DW_AT_linkage_name') or name] = self._function(die)
        elif die.tag == 'DW_TAG_variable' and name.startswith(POINTER_VARIABLES):
            pointer = self._target(die)
            if isinstance(pointer, Pointer) and isinstance(pointer.target, Function):
                self.found.functions[name.removeprefix(POINTER_VARIABLES)] = pointer.target
        elif die.tag == 'DW_TAG_enumeration_type':
            self.found.enumerators.update(self._type(die).values)
        elif die.tag in RECORDS and name and 'DW_AT_declaration' not in die.attributes:
            record = self._type(die)
            self.found.records.setdefault(name, record)
            for symbol, method in record.methods.items():
                self.found.functions.setdefault(symbol, method)

    def _complete(self):
        """Completes records that one unit only declares from the unit that defines them."""
        for type_ in self.types.values():
            known = self.found.records.get(type_.name) if isinstance(type_, Record) and type_.size is None else None
            if known:
                type_.__dict__.update(known.__dict__)

    def _target(self, die):
        return self._type(die.get_DIE_from_attribute('DW_AT_type')) if 'DW_AT_type' in die.attributes else Void()

    def _function(self, die):
        arguments = [self._target(child) for child in die.iter_children()
                     if child.tag == 'DW_TAG_formal_parameter' and 'DW_AT_artificial' not in child.attributes]
        return Function(self._target(die), arguments)

    def _type(self, die, alias=''):
        """`alias` is the name given by a typedef."""
        if die.tag in TRANSPARENT:
            if 'DW_AT_type' not in die.attributes:
                return Void()
            return self._type(die.get_DIE_from_attribute('DW_AT_type'), _text(die, 'DW_AT_name') or alias)
        if die.offset not in self.types:
            self._make(die, alias)
        return self.types[die.offset]

    def _make(self, die, alias):
        size = _number(die, 'DW_AT_byte_size')
        name = _text(die, 'DW_AT_name') or alias
        if die.tag in RECORDS:
            # Stored first: its fields may point to it.
            self.types[die.offset] = Record(name, None if 'DW_AT_declaration' in die.attributes else size,
                                            alignment_asked=_number(die, 'DW_AT_alignment'))
            self._fill(die, self.types[die.offset])
        elif die.tag in POINTERS:
            pointer = self.types[die.offset] = Pointer(Void(), size or die.cu['address_size'])
            pointer.target = self._target(die)
        else:
            self.types[die.offset] = self._simple(die, name, size)

    def _simple(self, die, name, size):
        if die.tag == 'DW_TAG_base_type':
            return Base(KINDS.get(_number(die, 'DW_AT_encoding'), 'unknown'), size)
        if die.tag == 'DW_TAG_enumeration_type':
            values = {_text(child, 'DW_AT_name'): _number(child, 'DW_AT_const_value') for child in die.iter_children()}
            return Enumeration(name, size, values)
        if die.tag == 'DW_TAG_array_type':
            return self._array(die)
        if die.tag == 'DW_TAG_subroutine_type':
            return self._function(die)
        return Void()

    def _array(self, die):
        type_ = self._target(die)
        for child in reversed([child for child in die.iter_children() if child.tag == 'DW_TAG_subrange_type']):
            last = _number(child, 'DW_AT_upper_bound', None)
            type_ = Array(type_, _number(child, 'DW_AT_count', -1 if last is None else last + 1))
        return type_

    def _fill(self, die, record):
        for child in die.iter_children():
            if child.tag == 'DW_TAG_member' and 'DW_AT_external' not in child.attributes:
                record.fields.append(self._field(child))
            elif child.tag == 'DW_TAG_inheritance':
                record.bases.append(self._field(child))
            elif child.tag == 'DW_TAG_subprogram':
                self._method(child, record)

    def _field(self, die):
        bits = _number(die, 'DW_AT_bit_size')
        offset = _number(die, 'DW_AT_data_bit_offset', None)
        if offset is None:
            place = die.attributes.get('DW_AT_data_member_location')
            offset = 8 * (place.value if place and isinstance(place.value, int) else _constant(place))
        type_ = self._target(die)
        if 'DW_AT_bit_offset' in die.attributes:  # before DWARF 4: counted from the most significant bit
            storage = 8 * (_number(die, 'DW_AT_byte_size') or getattr(type_, 'size', 0))
            offset += storage - _number(die, 'DW_AT_bit_offset') - bits
        return Field(_text(die, 'DW_AT_name'), offset, type_, bits)

    def _method(self, die, record):
        name = _text(die, 'DW_AT_name')
        if name.startswith('~'):
            return  # compilers describe destructors differently; a missing one shows in the methods after it
        name = _text(die, 'DW_AT_linkage_name') or _text(die, 'DW_AT_MIPS_linkage_name') or name
        record.methods[name] = self._function(die)
        if 'DW_AT_vtable_elem_location' in die.attributes:
            record.slots[_constant(die.attributes['DW_AT_vtable_elem_location'])] = name


def _constant(attribute):
    """A number that is given as an expression: DW_OP_constu or DW_OP_plus_uconst, and its operand."""
    if attribute is None:
        return 0
    if isinstance(attribute.value, int):
        return attribute.value
    number = 0
    for shift, byte in enumerate(attribute.value[1:]):
        number |= (byte & 0x7F) << (7 * shift)
    return number
