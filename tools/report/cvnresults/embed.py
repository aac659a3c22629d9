"""Files of tests that are embedded in the page: texts truncated to size, pictures scaled down."""
import base64
import dataclasses
import io
import os
import urllib.parse

from PIL import Image

from .directory import evidence, inside, open_regular
from .texts import clean_line, cut_in_the_middle, segments

PICTURE_WIDTH = 640
LARGEST_PICTURE = 40_000_000  # pixels
LARGEST_DRAWING = 400_000  # bytes of an SVG
LEAST_TEXT = 400
TEXT_LIMITS = [0, *(LEAST_TEXT << shift for shift in range(8))]  # up to 50 KB; 0: only a link
TEXT_FRAME = 150  # bytes that the page needs around a text
# The pictures of the eyes are shown side by side in this order, followed by other pictures.
PICTURE_ORDER = ('reference', 'capture', 'difference')
TOO_LARGE = 'is not in the page, which would become too large'
PICTURES = ('.png', '.jpg', '.jpeg', '.webp', '.bmp', '.ppm')


@dataclasses.dataclass
class Text:
    """A text for display."""
    link: str
    size: int
    parts: list  # (kind, text), including the kind 'gap'


@dataclasses.dataclass
class Picture:
    """A picture for display; without `source`, only as a link."""
    link: str
    name: str
    source: str = ''
    width: int = 0
    height: int = 0
    problem: str = ''


def link(path, directory):
    """URL of a file for a page in `directory`."""
    return './' + urllib.parse.quote(os.fsencode(os.path.relpath(path, directory)))


class TextBudget:
    """Distributes the space for texts: those of tests that did not pass get most of it."""

    def __init__(self, room):
        self.room = room
        self.sizes = {True: [], False: []}
        self.limits = {}

    def plan(self, size, matters):
        """Registers a text of `size` bytes."""
        self.sizes[matters].append(size)

    def decide(self):
        """Sets the limits; called when all texts are planned."""
        left = self.room
        for matters in (True, False):
            fitting = [limit for limit in TEXT_LIMITS if self._sum(matters, limit) <= left * (0.7 if matters else 1)]
            self.limits[matters] = max(fitting, default=0)
            left -= self._sum(matters, self.limits[matters])

    def _sum(self, matters, limit):
        return sum(min(size, limit) + TEXT_FRAME for size in self.sizes[matters])


def size_of(part, name):
    """Size of a file in a result directory; None if there is none."""
    path = inside(part, name)
    try:
        return os.stat(path).st_size if path and os.path.isfile(path) else None
    except OSError:
        return None


def load_text(part, name, typed, limit, directory):
    """A text file, shortened in the middle to about `limit` bytes. None if there is none."""
    path = inside(part, name)
    try:
        with open_regular(path) as file:
            size = os.fstat(file.fileno()).st_size
            before, after = cut_in_the_middle(size, limit)
            head = file.read(before)
            tail_at = size - after
            file.seek(tail_at)
            tail = file.read(after)
    except (OSError, TypeError, ValueError):
        return None
    if not limit and size:
        return Text(link(path, directory), size, [])
    if not after:
        return Text(link(path, directory), size, segments(head, typed))
    head = head[:head.rfind(b'\n') + 1] or head
    first = tail.find(b'\n') + 1
    tail, tail_at = tail[first:], tail_at + first
    parts = segments(head, [(at, length) for at, length in typed if at + length <= len(head)])
    parts.append(('gap', str(tail_at - len(head))))
    parts += segments(tail, [(at - tail_at, length) for at, length in typed if at >= tail_at])
    return Text(link(path, directory), size, parts)


class Pictures:
    """Scales pictures down and stops when the space for them is used up."""

    def __init__(self, room, directory):
        self.room = room
        self.directory = directory

    def of(self, attempt):
        """All pictures of an attempt, in display order."""
        names = [name for name in evidence(attempt) if name.lower().endswith((*PICTURES, '.svg'))]
        pictures = (self._load(attempt.part, name) for name in sorted(names, key=_place))
        return [picture for picture in pictures if picture]

    def _load(self, part, name):
        path = inside(part, name)
        if not path:
            return None
        picture = Picture(link(path, self.directory), clean_line(os.path.basename(name)))
        if self.room <= 0:
            picture.problem = TOO_LARGE
            return picture
        try:
            if name.lower().endswith('.svg'):
                kind, data = 'svg+xml', _drawing(path)
            else:
                kind, data = 'webp', _small(path, picture)
        except (OSError, ValueError, SyntaxError, Image.DecompressionBombError) as error:
            picture.problem = 'cannot be shown: ' + clean_line(getattr(error, 'strerror', None) or str(error))
            return picture
        source = f'data:image/{kind};base64,' + base64.b64encode(data).decode()
        if len(source) > self.room:
            self.room = 0
            picture.problem = TOO_LARGE
            return picture
        self.room -= len(source)
        picture.source = source
        return picture


def _place(name):
    stem = os.path.splitext(os.path.basename(name))[0].lower()
    known = [place for place, word in enumerate(PICTURE_ORDER) if word in stem]
    return (known[0] if known else len(PICTURE_ORDER), name)


def _drawing(path):
    with open_regular(path) as file:
        data = file.read(LARGEST_DRAWING + 1)
    if len(data) > LARGEST_DRAWING:
        raise ValueError('the drawing is too large')
    return data


def _small(path, picture):
    """The picture as WebP, at most `PICTURE_WIDTH` wide; stores its original size."""
    with open_regular(path) as file, Image.open(file) as image:
        picture.width, picture.height = image.size
        if image.width * image.height > LARGEST_PICTURE:
            raise ValueError(f'{image.width}x{image.height} is too large')
        image.draft('RGB', (PICTURE_WIDTH, PICTURE_WIDTH))
        small = image.convert('RGB')
        small.thumbnail((PICTURE_WIDTH, PICTURE_WIDTH), Image.Resampling.BILINEAR, reducing_gap=2.0)
    out = io.BytesIO()
    small.save(out, 'WEBP', quality=80, method=0)  # other methods take twice as long for the same size
    return out.getvalue()


def texts_of(attempt):
    """Names of the text files in an attempt's evidence."""
    return [name for name in evidence(attempt) if name.lower().endswith('.txt')]

