"""Runs tavlin from outside, and makes documents for it without its library.

    run('show', file)                         Result: status, out, err
    on_terminal('show', file)                 status, and what a terminal gets
    save(file, [Item('one', kids=[...])])     a document
    Case                                      a test with a folder, ok() and fails()
    main()                                    runs the tests with the program that argument 1 names
"""
import os
import pathlib
import pty
import select
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'tool'))
import archives

PROGRAM = None


class Item:
    """An item: text is str (which may hold unpaired surrogates), None, or what archives.attributed() made."""

    def __init__(self, title, note=None, checked=None, shows=None, expanded=False, kids=(), **data):
        self.title, self.note, self.checked, self.shows = title, note, checked, shows
        self.expanded, self.kids, self.data = expanded, list(kids), data


def order(items, prefix=''):
    """Items with their paths, in document order."""
    stack = [(prefix + str(i), item) for i, item in reversed(list(enumerate(items, 1)))]
    while stack:
        path, item = stack.pop()
        yield path, item
        stack += reversed([('%s.%d' % (path, i), kid) for i, kid in enumerate(item.kids, 1)])


def node_of(item):
    """The item as a node of an archive; its kids' nodes are made with it."""
    nodes = {}
    for one in reversed([x for _, x in order([item])]):
        data = dict(one.data)
        for key, value in (('title', one.title), ('note', one.note), ('checkStatus', one.checked),
                           ('showCheckState', one.shows)):
            if value is not None:
                data[key] = value
        nodes[id(one)] = archives.node(data, [nodes[id(kid)] for kid in one.kids],
                                       expanded=one.expanded)
    return nodes[id(item)]


def content(items, properties=None, **settings):
    """A document's bytes."""
    data = dict(settings)
    if properties is not None:
        data['documentProperties'] = archives.dictionary(
            {key: archives.array(value) if isinstance(value, list) else value
             for key, value in properties.items()})
    return archives.document(archives.node(data, [node_of(x) for x in items]))


def save(path, items, properties=None, **settings):
    with open(path, 'wb') as file:
        file.write(content(items, properties, **settings))
    return str(path)


class Result:
    def __init__(self, status, out, err):
        self.status, self.raw, self.err = status, out, err.decode('utf-8', 'replace')
        self.out = out.decode('utf-8', 'replace')

    def __repr__(self):
        return 'status %s, out %.300r, err %.300r' % (self.status, self.out, self.err)


ENVIRONMENT = {'PATH': os.environ['PATH'], 'HOME': tempfile.gettempdir(), 'LC_ALL': 'C.UTF-8',
               **{key: value for key, value in os.environ.items() if 'SAN_OPTIONS' in key}}


def run(*arguments, stdin=b'', environment=None, cwd=None, timeout=60):
    done = subprocess.run([PROGRAM, *map(str, arguments)], input=stdin, capture_output=True, cwd=cwd,
                          env={**ENVIRONMENT, **(environment or {})}, timeout=timeout)
    return Result(done.returncode, done.stdout, done.stderr)


def on_terminal(*arguments, environment=None, timeout=60):
    """Status and bytes as a terminal of 80 columns gets them, line breaks as they were."""
    child, terminal = pty.fork()
    if child == 0:
        os.execve(PROGRAM, [PROGRAM, *map(str, arguments)],
                  {**ENVIRONMENT, 'TERM': 'xterm-256color', **(environment or {})})
    got = b''
    while select.select([terminal], [], [], timeout)[0]:
        try:
            piece = os.read(terminal, 65536)
        except OSError:
            break
        if not piece:
            break
        got += piece
    _, status = os.waitpid(child, 0)
    os.close(terminal)
    return os.waitstatus_to_exitcode(status), got.replace(b'\r\n', b'\n')


class Case(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def save(self, name, items, properties=None, **settings):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        return save(path, items, properties, **settings)

    def ok(self, *arguments, **more):
        """The output of a run that has to end with 0 and to say nothing on standard error."""
        result = run(*arguments, **more)
        self.assertEqual((result.status, result.err), (0, ''), (arguments, result))
        return result.out

    def fails(self, *arguments, status=2, says=None, **more):
        """The messages of a run that has to end with this status, each "tavlin: …" in a line."""
        result = run(*arguments, **more)
        self.assertEqual(result.status, status, (arguments, result))
        for line in result.err.splitlines():
            self.assertTrue(line.startswith('tavlin: '), result)
        if says is not None:
            self.assertIn(says, result.err)
        return result.err


def main():
    """Runs the tests of the calling module; the program is the first argument."""
    global PROGRAM
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    sys.modules['driver'].PROGRAM = PROGRAM
    unittest.main(module='__main__')
