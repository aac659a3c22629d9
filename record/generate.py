#!/usr/bin/env python3
"""Makes the recorder's view of the HAL of the HAL's headers and annotations.txt.

Written to the output directory: HalInterface.h (a Visit function per record, a struct per call and
callback), HalCalls.inc (a line per call and callback, for macros), and Descriptions.inc (the same
for readers, and as metadata of the Common Trace Format). A pointer without an annotation
ends it with a message that names the function or the record.
"""
import argparse
import fnmatch
import hashlib
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

FIRST_EVENT_ID = 16  # lower ids are marks
# Their sizes depend on the architecture. So does the signedness of char, but char is text.
INTEGERS = {
    'char': 'char', 'bool': 'u', 'signed char': 'i', 'unsigned char': 'u',
    'short int': 'i', 'short unsigned int': 'u', 'int': 'i', 'unsigned int': 'u',
    'long int': 'i', 'long unsigned int': 'u', 'long long int': 'i', 'long long unsigned int': 'u'}
MARKS = [('test_begins', 'u32 number, text name'),
         ('test_ends', 'u32 number, text name, text verdict'),
         ('prompt', 'text kind, text text'), ('answer', 'text answer')]


class Problem(Exception):
    pass


def parse_annotations(path, texts_path):
    """Returns rows (pattern, {parameter: kind}), and dictionaries of records, layouts and texts."""
    rows, records, layouts, texts = [], {}, {}, parse_texts(texts_path)
    with open(path, encoding='utf-8') as file:
        for line in file:
            line = line.rstrip('\n')
            if not line or line.startswith('#'):
                continue
            words = line.split()
            if words[0] in ('text', 'process'):
                texts.append(line)
            elif words[0] == 'layout':
                fields = line.split(None, 3)[3]
                layouts.setdefault(words[1], {})[words[2]] = [
                    field.strip().rsplit(' ', 1) for field in fields.split(',')]
            elif words[0] == 'record':
                records[words[1]] = parse_kinds(line.split(None, 2)[2])
            else:
                rows.append((words[0], parse_kinds(line.split(None, 1)[1])))
    return rows, records, layouts, texts


def parse_texts(path):
    with open(path, encoding='utf-8') as file:
        return ['text ' + line.rstrip('\n') for line in file if line[0] not in '#\n']


def parse_kinds(text):
    return dict(re.findall(r'(\w+)=([\w-]+(?:\[[^\]]*\](?::text)?)?)', text))


class Headers:
    """The HAL's declarations as castxml sees them."""

    def __init__(self, directory, castxml, compiler, work):
        names = sorted(os.path.relpath(os.path.join(root, name), directory)
                       for root, _, files in os.walk(directory) for name in files
                       if name.endswith('.h'))
        self.names = names
        source, output = os.path.join(work, 'headers.cpp'), os.path.join(work, 'headers.xml')
        with open(source, 'w', encoding='utf-8') as file:
            file.writelines(f'#include "{name}"\n' for name in names)
        done = subprocess.run([castxml, '--castxml-output=1', '--castxml-cc-gnu', '(', *compiler, ')',
                               '-std=c++17', '-I', directory, '-o', output, source],
                              stderr=subprocess.PIPE, text=True, check=False)
        if done.returncode != 0:  # on success, stderr has only a note on how ARM passes numbers
            sys.exit(done.stderr)
        root = ElementTree.parse(output).getroot()
        self.nodes = {node.get('id'): node for node in root}
        ours = {node.get('id') for node in root
                if node.tag == 'File' and node.get('name').startswith(directory)}
        self.declared = [node for node in root if node.get('file') in ours]
        self.typedefs = {self.strip(node.get('type')).get('id'): node.get('name')
                         for node in self.declared if node.tag == 'Typedef'}

    def strip(self, type_id):
        """The node of a type without typedefs, const and elaborated names."""
        node = self.nodes[type_id]
        while node.tag in ('Typedef', 'CvQualifiedType', 'ElaboratedType'):
            node = self.nodes[node.get('type')]
        return node

    def spelling(self, type_id):
        """A type as spelled in C++."""
        node = self.nodes[type_id]
        if node.tag == 'CvQualifiedType':
            return 'const ' + self.spelling(node.get('type'))
        if node.tag == 'PointerType':
            return self.spelling(node.get('type')) + '*'
        if node.tag == 'ElaboratedType':
            return self.spelling(node.get('type'))
        return node.get('name') or self.typedefs.get(node.get('id'))

    def functions(self):
        """(name, class or None, node) of all callable functions."""
        found = [(node.get('name'), None, node) for node in self.declared
                 if node.tag == 'Function' and node.get('name').startswith('K2V_')]
        for node in self.declared:
            if node.tag == 'Method' and self.nodes[node.get('context')].get('name') == 'RLink':
                if node.get('artificial') is None:
                    found.append(('RLink::' + node.get('name'), 'RLink', node))
        return sorted(found, key=lambda entry: int(entry[2].get('line')) +
                      100000 * self.names.index(self.file_of(entry[2])))

    def file_of(self, node):
        name = self.nodes[node.get('file')].get('name')
        return next(own for own in self.names if name.endswith('/' + own))

    def callback(self, type_id):
        """The function type that a callback type points to, or None."""
        node = self.strip(type_id)
        if node.tag != 'PointerType':
            return None
        target = self.strip(node.get('type'))
        return target if target.tag == 'FunctionType' else None


class Generator:
    def __init__(self, headers, annotations):
        self.headers = headers
        self.rows, self.record_kinds, self.layouts, self.texts = annotations
        self.used = set()
        self.records = {}  # name: code
        self.with_buffers = set(self.layouts)
        self.described = []  # lines for the readers
        self.tsdl = []
        self.calls = []

    # Types.

    def scalar(self, type_id, where):
        node = self.headers.strip(type_id)
        if node.tag == 'FundamentalType' and node.get('name') in INTEGERS:
            kind = INTEGERS[node.get('name')]
            return kind if kind == 'char' else kind + node.get('size')
        if node.tag == 'Enumeration':
            return {'8': 'u8', '16': 'u16', '32': 'u32'}[node.get('size')]
        raise Problem(f'{where}: nothing is known of its type {self.headers.spelling(type_id)}')

    def element(self, type_id, where, fallback=None):
        """Describes a type: a scalar, or a record, for which it adds a Visit function."""
        node = self.headers.strip(type_id)
        if node.tag not in ('Struct', 'Class'):
            return self.scalar(type_id, where)
        name = self.headers.typedefs.get(node.get('id')) or node.get('name') or fallback
        self.need_record(name, node)
        return name

    def need_record(self, name, node):
        if name in self.records:
            return
        self.records[name] = ''
        if name in self.layouts:
            for phase, fields in self.layouts[name].items():
                self.describe_record(f'{name}.{phase}', fields)
            return
        kinds = self.record_kinds.get(name, {})
        alias, phases = '', {'entry': [], 'return': []}
        code = {'entry': '', 'return': ''}
        for member in node.get('members').split():
            field = self.headers.nodes[member]
            if field.tag != 'Field':
                continue
            field_name, kind = field.get('name'), kinds.get(field.get('name'))
            described, line, more = self.field(name, field, kind)
            alias += more
            for phase in phases:
                self.add_field(phase, phases[phase], code, kind, described, line, field_name)
        self.add_rooms(kinds, code)
        self.write_record(name, alias, phases, code)

    def field(self, record, field, kind):
        """Returns the description of a field, its C++, and an alias for an unnamed type."""
        name, where = field.get('name'), f'record {record}, field {field.get("name")}'
        node = self.headers.strip(field.get('type'))
        if node.tag == 'PointerType':
            if not kind or '[' not in kind:
                raise Problem(f'{where}: a pointer without an annotation')
            target = self.headers.strip(node.get('type'))
            is_void = target.get('name') == 'void'
            element = 'u8' if is_void else self.scalar(node.get('type'), where)
            self.with_buffers.add(record)
            size = self.count(kind, 'r.', set())
            owner = 'Caller' if kind.startswith('out') else 'Hal'
            return [f'buf {element}', name], f'v.{owner}Memory(r.{name}, {size}); ', ''
        if node.tag == 'ArrayType':
            alias = f'{record}_{name}'
            element = self.element(node.get('type'), where, alias)
            more = ''
            if element == alias:
                more = f'using {alias} = std::remove_extent_t<decltype({record}::{name})>;\n'
            return [f'{element}[{int(node.get("max")) + 1}]', name], f'v(r.{name}); ', more
        return [self.element(field.get('type'), where), name], f'v(r.{name}); ', ''

    @staticmethod
    def add_field(phase, fields, code, kind, described, line, name):
        if described[0].startswith('buf'):
            if phase == 'entry' and kind.startswith('out'):
                fields.append(['u8', name + '_given'])
                code[phase] += f'v.Given(r.{name}); '
            elif phase == 'return':
                fields.append(described)
                code[phase] += line
        elif kind in (None, phase.replace('entry', 'in').replace('return', 'out')):
            fields.append(described)
            code[phase] += line

    def add_rooms(self, kinds, code):
        """Memory of the caller has the size that other fields of the record specify."""
        for field, kind in kinds.items():
            if kind.startswith('out['):
                code['entry'] += f'v.FieldRoom(r.{field}, {self.count(kind, "r.", set())}); '

    def write_record(self, name, alias, phases, code):
        if phases['entry'] == phases['return']:
            self.describe_record(name, phases['entry'])
            body = code['entry']
        else:
            for phase, fields in phases.items():
                if fields:
                    self.describe_record(f'{name}.{phase}', fields)
            body = (f'if constexpr (V::kIsReturn) {{ {code["return"]}}} else {{ {code["entry"]}}}')
        self.records[name] = (f'{alias}template <typename V, IsA<{name}> R>\n'
                              f'void Visit([[maybe_unused]] V& v, [[maybe_unused]] R& r) {{ {body} }}\n')

    def describe_record(self, name, fields):
        self.described.append(f'record {name}|' + '|'.join(' '.join(field) for field in fields))
        body = ''.join(self.tsdl_field(type_name, field) for type_name, field in fields)
        self.tsdl.append(f'struct {name.replace(".", "_")} {{ {body}}};')

    @staticmethod
    def tsdl_type(name, phase='entry', known=()):
        if f'{name}.{phase}' in known:
            return f'struct {name}_{phase}'
        return name if re.fullmatch(r'[ui]\d+|char', name) else f'struct {name}'

    def tsdl_field(self, type_name, field, phase='entry'):
        known = {line.split('|')[0][7:] for line in self.described if line.startswith('record ')}
        tsdl = lambda name: {'char': 'chr'}.get(name) or self.tsdl_type(name, phase, known)
        if type_name.startswith('buf '):
            return f'u32 {field}_count; {tsdl(type_name[4:])} {field}[{field}_count]; '
        array = re.fullmatch(r'(.*)\[(\d+)\]', type_name)
        if array:
            return f'{tsdl(array[1])} {field}[{array[2]}]; '
        return f'{tsdl(type_name)} {field}; '

    # Calls.

    def annotation(self, function, parameter):
        kind = None
        for number, (pattern, kinds) in enumerate(self.rows):
            if fnmatch.fnmatchcase(function, pattern):
                self.used.add(number)
                kind = kinds.get(parameter, kind)
        return kind

    @staticmethod
    def count(kind, prefix, pointers):
        """The number of elements in C++, in 64 bits; 0 if a pointer that it needs is null."""
        text = re.search(r'\[(.*?)\]', kind)[1]
        needed = [name for name in pointers if re.search(rf'\*{name}\b|\b{name}->', text)]
        wide = re.sub(r'(?<![\w>])(\*?)([A-Za-z_]\w*)(->\w+)?',
                      lambda m: m[0] if m[2].isupper() and not m[3] else
                      f'static_cast<uint64_t>({m[1]}{"" if m[2][:4] == "K2V_" else prefix}{m[2]}{m[3] or ""})',
                      re.sub(r'\s+', ' ', text).replace('* ', '*  '))
        guard = ''.join(f'{name} == nullptr ? 0 : ' for name in needed)
        return f'({guard}{wide})'

    def parameter(self, function, name, type_id, pointers):
        """Returns (lines for readers, entry C++, return C++) of one parameter."""
        where = f'{function}, parameter {name}'
        kind = self.annotation(function, name)
        node = self.headers.strip(type_id)
        if self.headers.callback(type_id) is not None:
            if kind != 'callback':
                raise Problem(f'{where}: a callback without an annotation')
            return f'cb u32 {name}', f'v.Callback({name}); ', ''
        if node.tag != 'PointerType':
            return f'val {self.element(type_id, where)} {name}', f'v({name}); ', ''
        if kind is None:
            raise Problem(f'{where}: a pointer without an annotation')
        return self.pointer(where, kind, name, node, pointers)

    def pointer(self, where, kind, name, node, pointers):
        target = self.headers.strip(node.get('type'))
        is_const = self.headers.nodes[node.get('type')].get('const') == '1'
        if is_const and ('out' in kind):
            raise Problem(f'{where}: annotated as {kind}, but the HAL cannot write to it')
        is_number = target.tag in ('FundamentalType', 'Enumeration') and target.get('name') != 'void'
        if not is_const and is_number and re.match(r'in(\[|$)|secret-in', kind):
            raise Problem(f'{where}: annotated as {kind}, but the HAL can write to it')
        if kind == 'object':
            return f'obj u32 {name}', f'v.Object({name}); ', ''
        if kind == 'text':
            return f'inb char {name}', f'v.InText({name}); ', ''
        if kind.startswith('secret'):
            size = self.count(kind, '', pointers) if '[' in kind else f'sizeof(*{name})'
            if kind.startswith('secret-in'):
                return f'sin secret {name}', f'v.InSecret({name}, {size}); ', ''
            return (f'sout secret {name}', f'v.Room({name}, {size}); ',
                    f'v.OutSecret({name}, {size}, ok); ')
        element = 'u8' if target.get('name') == 'void' else self.element(node.get('type'), where)
        if '[' in kind:
            size = self.count(kind, '', pointers)
            text = 'Text' if kind.endswith(':text') else 'Buffer'
            if kind.startswith('in'):
                return f'inb {element} {name}', f'v.InBuffer({name}, {size}); ', ''
            return (f'outb {element} {name}', f'v.Room({name}, {size}); ',
                    f'v.Out{text}({name}, {size}, ok); ')
        short = {'in': 'in', 'out': 'out', 'inout': 'io'}.get(kind)
        if short is None:
            raise Problem(f'{where}: no kind of annotation: {kind}')
        return (f'{short} {element} {name}',
                f'v.Given({name}); ' if kind == 'out' else f'v.In({name}); ',
                '' if kind == 'in' else f'v.Out({name}, ok); ')

    def result(self, function, type_id):
        """Returns (description, C++) of the result."""
        node = self.headers.strip(type_id)
        if node.tag == 'FundamentalType' and node.get('name') == 'void':
            return 'none u8', ''
        if node.tag != 'PointerType':
            return f'val {self.scalar(type_id, function)}', 'v(result); '
        kind = self.annotation(function, 'return')
        if kind is None:
            raise Problem(f'{function}: its result is a pointer without an annotation')
        if kind == 'object':
            return 'obj u32', 'v.NewObject(result); '
        record = self.element(node.get('type'), function)
        if kind == 'new-object':
            return f'new {record}', 'v.NewObject(result); v.HalRecord(result); '
        return f'given {record}', 'v.HalRecord(result); '

    def add_call(self, name, owner, node, returns, is_callback=False):
        arguments = [(argument.get('name') or f'argument{i}', argument.get('type'))
                     for i, argument in enumerate(node.findall('Argument'))]
        if is_callback:
            arguments = [(self.callback_names(name, i), type_id)
                         for i, (_, type_id) in enumerate(arguments)]
        pointers = {n for n, t in arguments if self.headers.strip(t).tag == 'PointerType'}
        described, entry, back = [], '', ''
        is_method = owner is not None and node.get('static') is None
        if is_method:
            described.append('this u32 link')
            entry += 'v.Object(link); '
        if is_callback:
            described.append('this u32 handler')
            entry += 'v(handler); '
        for argument, type_id in arguments:
            line, entry_code, back_code = self.parameter(name, argument, type_id, pointers)
            described.append(line)
            entry += entry_code
            back += back_code
        result, result_code = self.result(name, returns)
        self.calls.append({
            'name': name, 'cpp': name.replace('::', '_'), 'arguments': arguments, 'entry': entry,
            'return': result_code + back, 'result': self.headers.spelling(returns),
            'method': is_method, 'callback': is_callback, 'owner': owner,
            'makes': result.split(' ')[0] in ('obj', 'new'),
            'symbol': node.get('mangled') if owner else name})
        self.describe_call(name, 'callback' if is_callback else 'call', described, result)

    def add_link_end(self):
        """The deletion of a link, which waits until its slave has finished."""
        self.calls.append({
            'name': 'RLink::Delete', 'cpp': 'RLink_Delete', 'arguments': [], 'return': '',
            'entry': 'v.Object(link); ', 'result': 'void', 'method': True, 'callback': False,
            'makes': False, 'owner': 'RLink', 'symbol': ''})
        self.describe_call('RLink::Delete', 'call', ['this u32 link'], 'none u8')

    def callback_names(self, name, index):
        """castxml drops the names of a callback's parameters; the header's text has them."""
        for header in self.headers.names:
            with open(os.path.join(self.directory, header), encoding='utf-8') as file:
                found = re.search(r'\(\*' + name + r'\)\(([^)]*)\)', file.read())
            if found:
                return re.search(r'(\w+)\s*$', found[1].split(',')[index])[1]
        raise Problem(f'{name}: its declaration was not found')

    def describe_call(self, name, word, described, result):
        self.described.append(f'{word} {name}|{result}|' + '|'.join(described))
        number = FIRST_EVENT_ID + 2 * (len(self.calls) - 1)
        field = self.tsdl_field
        entry, back = '', ''
        kind, element = result.split(' ')
        if kind in ('val', 'obj'):
            back += field(element, 'result')
        elif kind in ('new', 'given'):
            back += 'u32 result; ' if kind == 'new' else ''
            back += f'u8 record_given; {self.tsdl_type(element)} record[record_given]; '
        for line in described:
            kind, element, argument = line.split(' ')
            entry_part, back_part = self.tsdl_argument(kind, element, argument)
            entry, back = entry + entry_part, back + back_part
        for suffix, offset, body in (('entry', 0, entry), ('exit', 1, back)):
            self.tsdl.append(f'event {{ name = "{name}_{suffix}"; id = {number + offset}; '
                             f'fields := struct {{ {body}}}; }};')

    def optional(self, name, flag, element, phase):
        """What a pointer to one element points to. A record with buffers is always present: readers
        of the format find the length of a buffer only where no other sequence is around it."""
        known = {line.split('|')[0][7:] for line in self.described if line.startswith('record ')}
        length = '' if element in self.with_buffers else f'[{name}_{flag}]'
        return f'u8 {name}_{flag}; {self.tsdl_type(element, phase, known)} {name}{length}; '

    def tsdl_argument(self, kind, element, name):
        known = {line.split('|')[0][7:] for line in self.described if line.startswith('record ')}
        entry_type = self.tsdl_type(element, 'entry', known)
        given = f'u8 {name}_given; '
        given_one = self.optional(name, 'given', element, 'entry')
        written = self.optional(name, 'written', element, 'return')
        buffer = self.tsdl_field(f'buf {element}', name)
        return {
            'val': (f'{entry_type} {name}; ', ''), 'this': (f'u32 {name}; ', ''),
            'obj': (f'u32 {name}; ', ''), 'cb': (f'u32 {name}; ', ''),
            'in': (given_one, ''), 'io': (given_one, written),
            'out': (given, written), 'inb': (given + buffer, ''),
            'outb': (given + f'u32 {name}_room; ', buffer),
            'sin': (given_one, ''),
            'sout': (given + f'u32 {name}_room; ', written)}[kind]

    def run(self, directory):
        self.directory = directory
        self.described.append('record secret|u32 length|u8[8] digest')
        self.tsdl.append('struct secret { u32 length; u8 digest[8]; };')
        for name, owner, node in self.headers.functions():
            self.add_call(name, owner, node, node.get('returns'))
        self.add_link_end()
        for node in self.headers.declared:
            if node.tag == 'Typedef' and self.headers.callback(node.get('id')) is not None:
                target = self.headers.callback(node.get('id'))
                self.add_call(node.get('name'), None, target, target.get('returns'), True)
        unused = [row[0] for number, row in enumerate(self.rows) if number not in self.used]
        if unused:
            raise Problem(f'annotations without a function: {", ".join(unused)}')

    # Files.

    def marks_tsdl(self):
        types = {'u32': 'u32', 'text': 'string'}
        for number, (name, fields) in enumerate(MARKS):
            parts = [field.split() for field in fields.split(', ')]
            body = ''.join(f'{types[kind]} {field}; ' for kind, field in parts)
            yield (f'event {{ name = "{name}"; id = {number}; '
                   f'fields := struct {{ {body}}}; }};')

    def description(self):
        texts = [line for line in self.texts]
        marks = [f'mark {name}|' + fields.replace(', ', '|') for name, fields in MARKS]
        return '\n'.join(marks + self.described + texts) + '\n'

    def metadata(self):
        integers = [f'typealias integer {{ size = {bits}; align = 8; signed = {signed}; }} := {name};'
                    for prefix, signed in (('u', 'false'), ('i', 'true'))
                    for bits in (8, 16, 32, 64) for name in [f'{prefix}{bits}']]
        integers.append('typealias integer { size = 8; align = 8; signed = true; encoding = UTF8; } := chr;')
        return '\n'.join(integers + self.tsdl + list(self.marks_tsdl())) + '\n'

    def interface(self):
        lines = ['// Generated from the HAL\'s headers and annotations.txt.', '#pragma once', '']
        lines += [f'#include "{name}"' for name in self.headers.names]
        lines += ['#include "interface/Codec.h"', '', 'namespace record {', '']
        lines += [f'template <> inline constexpr bool kHasBuffers<{name}> = true;'
                  for name in sorted(self.with_buffers & set(self.records))] + ['']
        lines += [code for code in self.records.values() if code]
        lines += [self.call_struct(number, call) for number, call in enumerate(self.calls)]
        lines += [f'inline constexpr unsigned kCallCount = {len(self.calls)};', '}  // namespace record']
        return '\n'.join(lines) + '\n'

    def call_struct(self, number, call):
        members = ['RLink* link'] if call['method'] else []
        members += ['uint32_t handler'] if call['callback'] else []
        members += [f'{self.headers.spelling(t)} {n}' for n, t in call['arguments']]
        names = ', '.join(n for n, _ in call['arguments'])
        fields = ''.join(f'  {member}{{}};\n' for member in members)
        is_void = call['result'] == 'void'
        make = f'link->{call["name"][7:]}({names})' if call['method'] else f'next({names})'
        if call['name'] == 'RLink::Delete':
            make = 'delete link'
        result = '' if is_void else f'  {call["result"]} result{{}};\n'
        assign = '' if is_void else 'result = '
        ok = 'true' if is_void else 'Succeeded(result)'
        types = ', '.join(self.headers.spelling(t) for _, t in call['arguments'])
        return (f'struct Call_{call["cpp"]} {{\n'
                f'  static constexpr uint16_t kIndex = {number};\n'
                f'  static constexpr const char* kSymbol = "{call["symbol"]}";\n'
                f'  static constexpr bool kIsMethod = {str(call["method"]).lower()};\n'
                f'  static constexpr bool kMakesObject = {str(call["makes"]).lower()};\n'
                f'  using Function = {call["result"]} (*)({types});\n'
                f'{fields}{result}'
                f'  template <typename V> void Entry([[maybe_unused]] V& v) {{ {call["entry"]}}}\n'
                f'  template <typename V> void Return([[maybe_unused]] V& v) {{\n'
                f'    [[maybe_unused]] const bool ok = {ok};\n'
                f'    {call["return"]}\n  }}\n'
                f'  void Make([[maybe_unused]] Function next) {{ {assign}{make}; }}\n}};\n')

    def uses(self):
        """One macro per kind of call: FUNCTION, METHOD and LINK_FUNCTION (of links), CALLBACK."""
        lines = []
        for call in self.calls:
            if call['name'] == 'RLink::Delete':
                continue
            word = 'CALLBACK' if call['callback'] else 'METHOD' if call['method'] else 'FUNCTION'
            spelled = [f'{self.headers.spelling(t)} {n}' for n, t in call['arguments']]
            names = ', '.join(n for n, _ in call['arguments'])
            short = call['name'] if not call['owner'] else call['name'][7:]
            if call['owner'] and not call['method']:
                word = 'LINK_FUNCTION'
            lines.append(f'CVN_{word}({call["result"]}, {short}, ({", ".join(spelled)}), '
                         f'Call_{call["cpp"]}, ({names}))')
        return '\n'.join(lines) + '\n'

    def descriptions(self):
        description = self.description()
        fingerprint = hashlib.sha256(description.encode()).hexdigest()[:16]
        quoted = lambda line: '"' + line.replace('\\', '\\\\').replace('"', '\\"') + '\\n"'

        def lines(name, text):
            return (f'inline constexpr const char* {name}[] = {{\n' +
                    ',\n'.join(quoted(line) for line in text.splitlines()) + '};\n')
        return ('#pragma once\n#include <string>\nnamespace record {\n'
                f'inline constexpr char kFingerprint[] = "{fingerprint}";\n' +
                lines('kDescription', description) + lines('kMetadata', self.metadata()) +
                'inline std::string TextOf(const auto& lines) {\n  std::string text;\n'
                '  for (const char* line : lines) text += line;\n  return text;\n}\n'
                '}  // namespace record\n')


def write_if_changed(path, text):
    try:
        with open(path, encoding='utf-8') as file:
            if file.read() == text:
                return
    except OSError:
        pass
    with open(path, 'w', encoding='utf-8') as file:
        file.write(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--headers', required=True, help='directory of the HAL\'s headers')
    parser.add_argument('--annotations', required=True)
    parser.add_argument('--texts', required=True, help='how records are printed')
    parser.add_argument('--output', required=True, help='directory of what is made')
    parser.add_argument('--castxml', default='castxml')
    parser.add_argument('--compiler', action='append', required=True,
                        help='the target\'s compiler; again for each option that selects the target')
    options = parser.parse_args()
    os.makedirs(options.output, exist_ok=True)
    directory = os.path.realpath(options.headers)
    try:
        headers = Headers(directory, options.castxml, options.compiler, options.output)
        generator = Generator(headers, parse_annotations(options.annotations, options.texts))
        generator.run(directory)
    except Problem as problem:
        sys.exit(f'{options.annotations}: {problem}')
    for name, text in (('HalInterface.h', generator.interface()), ('HalCalls.inc', generator.uses()),
                       ('Descriptions.inc', generator.descriptions())):
        write_if_changed(os.path.join(options.output, name), text)


if __name__ == '__main__':
    main()
