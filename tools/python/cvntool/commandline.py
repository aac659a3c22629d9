"""A command line whose man page is generated from the same options as --help."""
import argparse
import sys

USAGE = 2


class Parser(argparse.ArgumentParser):
    """`summary` is for NAME in the man page. Adds --document and --version; invalid usage exits with status 2."""

    def __init__(self, prog, summary, version, **arguments):
        super().__init__(prog=prog, allow_abbrev=False, **arguments)
        self.summary, self.release = summary, version
        self.add_argument('--document', action=_Manual, nargs=0, help='print the man page')
        self.add_argument('--version', action='version', version=f'{prog} {version}', help='print the version')

    def error(self, message):
        line = ' '.join(''.join(c if c.isprintable() else ' ' for c in message).split())
        print(f"{self.prog}: {line}; try '{self.prog} --help'", file=sys.stderr)
        sys.exit(USAGE)

    def manual(self):
        """The man page (roff)."""
        def roff(text):
            return text.replace('\\', '\\e').replace('-', '\\-')

        words = [action.metavar if action.nargs is None else f'[{action.metavar}]' if action.nargs == '?'
                 else f'{action.metavar}...' for action in self._get_positional_actions()]
        page = [f'.TH {self.prog.upper()} 1 "" "{self.prog} {self.release}"', '.SH NAME',
                roff(f'{self.prog} - {self.summary}'), '.SH SYNOPSIS', f'.B {self.prog}',
                f'[\\fIOPTION\\fR]... {" ".join(words)}', '.SH DESCRIPTION', roff(self.description), '.SH OPTIONS']
        for action in self._actions:  # argparse offers no public list of them
            shown = ', '.join(action.option_strings) or action.metavar
            metavar = f' {action.metavar}' if action.option_strings and action.metavar else ''
            page += ['.TP', '.B ' + roff(shown + metavar), roff(action.help)]
        return '\n'.join([*page, '.SH EXIT STATUS', roff(self.epilog.removeprefix('Exit status: '))])


class _Manual(argparse.Action):
    """Prints the man page and exits."""

    def __call__(self, options, namespace, values, option_string=None):
        print(options.manual())
        options.exit()
