"""Sanitises texts of tests for the page: whatever they contain, they remain text."""
import re

# Terminal escape sequences: CSI, strings up to BEL or ST, and all others of two bytes.
_ESCAPES = re.compile('\x1b(?:\\[[0-?]*[ -/]*[@-~]|[\\]P_^X][^\x07\x1b]*(?:\x07|\x1b\\\\)?|.?)', re.DOTALL)
_NEWLINES = re.compile('\r+\n')
# Control characters, bidirectional marks, line separators, surrogates and noncharacters: shown as
# their numbers, so that they have no effect and are visible.
_UNSHOWN = re.compile('[\x00-\x08\x0b-\x1f\x7f-\x9f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb'
                      '\ud800-\udfff\ufffe\uffff\U000e0000-\U000e007f]')


def clean(text):
    """`text` without escape sequences; characters that must not be displayed become ⟨U+202E⟩."""
    if text.isascii() and text.isprintable():
        return text  # true of most texts
    text = _NEWLINES.sub('\n', _ESCAPES.sub('', text))
    return _UNSHOWN.sub(lambda found: f'⟨U+{ord(found[0]):04X}⟩', text)


def clean_line(text):
    """Like `clean`, on one line."""
    return ' '.join(clean(text).split())


def decoded(data):
    """Output of a test as text; bytes that are not UTF-8 become U+FFFD."""
    return data.decode('utf-8', 'replace')


def plural(count, noun):
    """'1 test', '3 tests'."""
    return f'{count} {noun}' + ('' if count == 1 else 's')


def duration(seconds):
    """A readable duration: '0.250 s', '3 min 20 s', '2 h 05 min'."""
    if seconds < 60:
        return f'{seconds:.3f} s'
    minutes, rest = divmod(round(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return f'{hours} h {minutes:02} min' if hours else f'{minutes} min {rest:02} s'


def segments(data, typed):
    """A test's output as [(kind, text)]: 'out' was printed, 'prompt' is the last line before an
    answer, 'in' was typed. `typed` has (position, length) of each answer in the bytes."""
    parts = []
    at = 0
    for position, length in sorted(typed):
        if position < at or position + length > len(data):
            continue
        _add_output(parts, data[at:position], before_answer=True)
        parts.append(('in', clean(decoded(data[position:position + length]))))
        at = position + length
    _add_output(parts, data[at:], before_answer=False)
    return parts


def _add_output(parts, data, before_answer):
    text = clean(decoded(data))
    filled = text.rstrip() if before_answer else ''
    prompt_at = filled.rfind('\n') + 1
    if prompt_at:
        parts.append(('out', text[:prompt_at]))
    if text:
        parts.append(('prompt' if filled else 'out', text[prompt_at:]))


def cut_in_the_middle(size, limit):
    """How many bytes of a text of `size` bytes are shown from its beginning and from its end."""
    if size <= limit:
        return size, 0
    return limit - limit // 2, limit // 2
