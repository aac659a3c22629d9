"""Types of an interface, as debugging information describes them. Sizes are in bytes, offsets in bits."""
from dataclasses import dataclass, field


@dataclass(eq=False)
class Void:
    """void, also as the target of a pointer."""


@dataclass(eq=False)
class Base:
    kind: str  # signed, unsigned, boolean, float etc.
    size: int


@dataclass(eq=False)
class Pointer:
    target: object
    size: int


@dataclass(eq=False)
class Array:
    element: object
    count: int  # -1: unknown


@dataclass(eq=False)
class Function:
    result: object
    arguments: list


@dataclass(eq=False)
class Enumeration:
    name: str
    size: int
    values: dict


@dataclass(eq=False)
class Field:
    name: str
    offset: int
    type: object
    bits: int = 0  # of a bit field


@dataclass(eq=False)
class Record:
    """`size` is None if the record is only declared. `methods` has linkage names, or plain names where there is
    none; `slots` maps slots of the virtual function table to such names."""
    name: str
    size: int | None
    fields: list = field(default_factory=list)
    bases: list = field(default_factory=list)
    methods: dict = field(default_factory=dict)
    slots: dict = field(default_factory=dict)
    alignment_asked: int = 0  # by alignas or similar


@dataclass
class Interface:
    functions: dict = field(default_factory=dict)  # by symbol
    records: dict = field(default_factory=dict)  # complete ones, by name
    enumerators: dict = field(default_factory=dict)


def alignment(type_):
    """In bytes: on the supported machines, the alignment of the largest part."""
    match type_:
        case Base() | Pointer() | Enumeration():
            return type_.size
        case Array():
            return alignment(type_.element)
        case Record():
            parts = [alignment(part.type) for part in type_.fields] + [alignment(base.type) for base in type_.bases]
            return max([type_.alignment_asked, 1, *parts])
    return 1


def text(type_):
    """A short name for a type."""
    match type_:
        case Base():
            return f'{type_.kind} of {type_.size} bytes' if type_.size != 1 else f'{type_.kind} of 1 byte'
        case Pointer():
            return 'a pointer' if isinstance(type_.target, Void) else f'a pointer to {text(type_.target)}'
        case Array():
            return f'{"unknown" if type_.count < 0 else type_.count} times {text(type_.element)}'
        case Function():
            return 'a function'
        case Enumeration():
            return f'enumeration {type_.name or "without name"} of {type_.size} bytes'
        case Record():
            return f'record {type_.name or "without name"}'
    return 'nothing'
