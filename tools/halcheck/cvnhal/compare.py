"""Whether two interfaces are the same to a compiled program. The first of two is always the library's, the second the
harness's; differences are described from the library's side."""
from .model import Array, Base, Enumeration, Function, Pointer, Record, Void, alignment, text


class Comparison:
    """Compares types; caches the findings for records, since many functions use the same record."""

    def __init__(self):
        self.known = {}

    def functions(self, theirs, ours):
        """The differences between two functions, one line each."""
        found = self._types(theirs.result, ours.result, 'result')
        if len(theirs.arguments) != len(ours.arguments):
            found.append(f'{_count(len(theirs.arguments), "argument")}, the harness passes {len(ours.arguments)}')
        for number, (their, our) in enumerate(zip(theirs.arguments, ours.arguments), 1):
            found += self._types(their, our, f'argument {number}')
        return list(dict.fromkeys(found))

    def _types(self, theirs, ours, where):
        """`where` names the place of the type."""
        if isinstance(theirs, Record) and isinstance(ours, Record):
            return self._records(theirs, ours)
        if isinstance(theirs, Pointer) and isinstance(ours, Pointer):
            return self._targets(theirs, ours, where)
        if isinstance(theirs, Array) and isinstance(ours, Array) and theirs.count == ours.count:
            return self._types(theirs.element, ours.element, where)
        if isinstance(theirs, Function) and isinstance(ours, Function):
            return [f'{where}: {line}' for line in self.functions(theirs, ours)]
        if isinstance(theirs, Enumeration) and isinstance(ours, Enumeration) and theirs.size == ours.size:
            return enumerators(theirs.values, ours.values)
        return [] if _same(theirs, ours) else [f'{where}: {text(theirs)}, the harness has {text(ours)}']

    def _targets(self, theirs, ours, where):
        if theirs.size != ours.size:
            return [f'{where}: pointer of {theirs.size} bytes, the harness has {ours.size}']
        if any(isinstance(side.target, Void) or isinstance(side.target, Record) and side.target.size is None
               for side in (theirs, ours)):
            return []
        return self._types(theirs.target, ours.target, where)

    def _records(self, theirs, ours):
        pair = (id(theirs), id(ours))
        if pair not in self.known:
            self.known[pair] = []  # for the time of the comparison: records may point to each other
            name = text(ours)
            self.known[pair] = [line if line.startswith('record ') else f'{name}: {line}'
                                for line in self._layout(theirs, ours)]
        return self.known[pair]

    def _layout(self, theirs, ours):
        if theirs.size is None or ours.size is None:
            return []
        found = []
        for what, their, our in (('size', theirs.size, ours.size), ('alignment', alignment(theirs), alignment(ours))):
            if their != our:
                found.append(f'{what} {their}, the harness has {our}')
        return (found + self._fields(theirs.fields, ours.fields, 'field') + self._fields(theirs.bases, ours.bases, 'base') +
                self._methods(theirs, ours))

    def _fields(self, theirs, ours, what):
        found, matched = [], set()
        by_name = {field.name: field for field in theirs}
        by_offset = {field.offset: field for field in theirs}
        our_names = {field.name for field in ours}
        for our in ours:
            their = by_name.get(our.name) if our.name else None
            at_its_place = by_offset.get(our.offset)
            # A different name at the same offset is a rename; unnamed unions and bases are
            # identified by their offset.
            if their is None and at_its_place and (at_its_place.name not in our_names or not our.name):
                their = at_its_place
            matched.add(id(their))
            name = f'{what} {our.name}'.rstrip()
            if their is None:
                found.append(f'{name} is missing')
            elif (their.offset, their.bits) != (our.offset, our.bits):
                found.append(f'{name} {_place(their)}, the harness has it {_place(our)}')
            else:
                found += self._types(their.type, our.type, name)
        for their in theirs:
            if id(their) not in matched:
                found.append(f'{what} {their.name} {_place(their)} is unknown to the harness')
        return found

    def _methods(self, theirs, ours):
        found = []
        for slot, name in sorted(ours.slots.items()):
            their = theirs.slots.get(slot)
            if their != name:
                elsewhere = [place for place, method in theirs.slots.items() if method == name]
                found.append(f'{{{name}}} is ' + (f'virtual function {elsewhere[0]}, the harness calls {slot}'
                                                  if elsewhere else 'no virtual function'))
            else:
                found += [f'{{{name}}}: {line}' for line in self.functions(theirs.methods[name], ours.methods[name])]
        return found


def enumerators(theirs, ours):
    """Differences between values with the same name. Compilers omit enumerations that a library does not use."""
    return [f'enumerator {name} is {theirs[name]}, the harness has {value}'
            for name, value in ours.items() if theirs.get(name, value) != value]


def _same(theirs, ours):
    if isinstance(theirs, Base) and isinstance(ours, Base):
        return (theirs.kind, theirs.size) == (ours.kind, ours.size)
    numbers = (Base, Enumeration)
    if isinstance(theirs, numbers) and isinstance(ours, numbers):
        return theirs.size == ours.size and all(getattr(side, 'kind', '') != 'float' for side in (theirs, ours))
    return isinstance(theirs, Void) and isinstance(ours, Void)


def _place(field):
    bits = f' of {_count(field.bits, "bit")}' if field.bits else ''
    rest = f' bit {field.offset % 8}' if field.offset % 8 or field.bits else ''
    return f'at byte {field.offset // 8}{rest}{bits}'


def _count(number, what):
    return f'{number} {what}' if number == 1 else f'{number} {what}s'
