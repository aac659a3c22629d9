"""Findings of a playback test about frames, pacing and synchronisation, prepared for display."""
import dataclasses
import math

from .directory import number_of, text_of

MOST_ROWS = 60
CHART_WIDTH, CHART_HEIGHT, CHART_LEFT, CHART_EDGE = 720, 220, 52, 16
TICKS = 8
MARGIN_S = 0.5


@dataclasses.dataclass
class Cause:
    """An event that is not a consequence of another one."""
    stage: str
    kind: str
    frame: str
    count: str
    detail: str
    seen_in: str


@dataclasses.dataclass
class Mark:
    """A flash and its beep."""
    second: float
    ms: float
    passed: bool
    x: float = 0
    y: float = 0


@dataclasses.dataclass
class Chart:
    """Differences between sound and picture over time, in pixels of the chart."""
    marks: list
    least: float
    most: float
    band: tuple  # upper and lower edge
    zero: float
    ticks: list  # (x, text) of seconds
    levels: list  # (y, text) of milliseconds


@dataclasses.dataclass
class Playback:
    """All findings of a playback. The lists may be longer than what is shown."""
    causes: list
    pacing: list
    chart: Chart | None


def playback(findings):
    """The playback findings of one test; None if there are none."""
    of_kind = {kind: [each for each in findings if each['event'] == kind]
               for kind in ('frame-event', 'stage-pacing', 'sync-mark')}
    if not any(of_kind.values()):
        return None
    pacing = [[text_of(each, 'stage'), *(_number(each, name) for name in ('rate', 'worst_ms', 'uneven', 'drift_ppm'))]
              for each in of_kind['stage-pacing']]
    return Playback(_causes(of_kind['frame-event']), pacing, _chart(of_kind['sync-mark']))


def _number(event, name):
    value = number_of(event, name)
    return '–' if value is None else f'{value:g}'


def _causes(events):
    followers = {}
    for event in events:
        if number_of(event, 'cause') is not None:
            followers.setdefault(event['cause'], {})[text_of(event, 'stage')] = None
    return [Cause(text_of(event, 'stage'), text_of(event, 'kind'), _frames(event), _number(event, 'count'),
                  _detail(event), ', '.join(followers.get(number_of(event, 'id'), ())))
            for event in events if event.get('cause') is None]


def _frames(event):
    first, last = _number(event, 'first'), _number(event, 'last_possible')
    return first if last in (first, '–') else f'{first} to {last}'


def _detail(event):
    columns = event.get('columns')
    parts = [
        'time ' + text_of(event, 'time') if text_of(event, 'time') else '',
        _number(event, 'ms') + ' ms' if number_of(event, 'ms') is not None else '',
        ', '.join(column for column in columns if isinstance(column, str)) if isinstance(columns, list) else '',
        f'{text_of(event, "dump")} instead of {text_of(event, "golden")}' if text_of(event, 'golden') else '',
        'line ' + _number(event, 'row') if number_of(event, 'row') is not None else '',
    ]
    return ', '.join(filter(None, parts))


def _chart(events):
    found = [(number_of(each, 'flash_pts'), number_of(each, 'ms'), each.get('passed') is True) for each in events]
    found = [each for each in found if None not in each]
    if not found:
        return None
    first = found[0][0]
    # Time stamps are the lower 32 bits of a 90 kHz counter.
    marks = [Mark(((pts - first + (1 << 31)) % (1 << 32) - (1 << 31)) / 90000, ms, passed) for pts, ms, passed in found]
    least, most = number_of(events[0], 'least_ms') or 0, number_of(events[0], 'most_ms') or 0
    low = min(least, *(mark.ms for mark in marks)) - 10
    high = max(most, *(mark.ms for mark in marks)) + 10
    begin = min(mark.second for mark in marks) - MARGIN_S
    end = max(mark.second for mark in marks) + MARGIN_S

    def x(second):
        return round(CHART_LEFT + (CHART_WIDTH - CHART_LEFT - CHART_EDGE) * (second - begin) / (end - begin), 1)

    def y(ms):
        return round(CHART_EDGE + (CHART_HEIGHT - 3 * CHART_EDGE) * (high - ms) / (high - low), 1)

    for mark in marks:
        mark.x, mark.y = x(mark.second), y(mark.ms)
    step = math.ceil((end - begin) / TICKS)
    seconds = range(math.ceil(begin / step) * step, math.floor(end) + 1, step)
    levels = sorted({least, 0, most, min(mark.ms for mark in marks), max(mark.ms for mark in marks)})
    return Chart(marks, least, most, (y(most), y(least)), y(0), [(x(second), str(second)) for second in seconds],
                 [(y(level), f'{level:+g}' if level else '0') for level in levels])
