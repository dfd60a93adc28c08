"""What the tool and the library cost, beside reading and copying the file: medians of interleaved
runs on one processor with a warm cache.

    tool.py BUILD-FOLDER [--quick] [--folder FOLDER] [--processor NUMBER] [--items NUMBER]
            [--writers NAME,...] [--parts table,growth,others] [--all-sizes]

The same documents come in the hands of several writers (tests/tool/writers.py says which); the
"own" ones are made by this program.  --quick leaves out the documents of a million items, the other
programs, and most of the runs; --all-sizes has every writer write a million items in every shape,
and not only mixed ones, which takes half an hour.  --items is how many the table's document has.
After each file that is written, ours or cp's, there is a pause, so that the disk can come to rest.
Documents are made in a new folder in FOLDER (the usual one for temporary files) and removed
afterwards: about 4 GB without --quick.  Which file system that is matters for copying and writing.

"wall" is what a clock shows and what the ratios are of; "cpu" is the processor time of both ends.
"""
import argparse
import ctypes.util
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from measuring import (HEADING, Timed, copy_synced, interleaved, print_pair, print_share, rest_from,
                       verdict)

SIZES = (10_000, 100_000, 1_000_000)
SHAPES = ('flat', 'deep', 'mixed')
WRITERS = ('own', 'platform', 'backwards', 'plistlib')
PARTS = ('table', 'growth', 'others')
TRANSLATE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'tests', 'tool',
                         'writers.py')


class Bench:
    def __init__(self, folder, options):
        build = os.path.abspath(options.build)
        self.tool, self.make = (os.path.join(build, 'bin', name)
                                for name in ('tavlin-keywords', 'outline-make'))
        self.read_titles = os.path.join(build, 'bench', 'read-titles')
        self.timed = Timed(build)
        self.folder = folder
        self.quick, self.all_sizes = options.quick, options.all_sizes
        self.writers, self.parts, self.items = options.writers, options.parts, options.items
        self.runs = 7 if self.quick else 15
        self.writes = 0

    def document(self, items, shape='mixed', writer='own'):
        return os.path.join(self.folder, f'{writer}-{shape}-{items}')

    def sizes(self, writer, shape):
        """How many items the documents have that a writer's growth is measured with."""
        is_whole = not self.quick and (writer == 'own' or shape == 'mixed' or self.all_sizes)
        return SIZES if is_whole else SIZES[:2]

    def make_documents(self):
        """Those that are asked for, and the own ones that other writers make theirs from."""
        wanted = set()
        if 'table' in self.parts:
            wanted |= {(self.items, 'mixed', writer) for writer in self.writers}
            wanted.add((10, 'mixed', 'own'))
        if 'growth' in self.parts:
            wanted |= {(items, shape, writer) for writer in self.writers for shape in SHAPES
                       for items in self.sizes(writer, shape)}
        if 'others' in self.parts:
            wanted |= {(self.items, 'mixed', 'own'), (10_000, 'mixed', 'own')}
        self.run_all([[self.make, self.document(items, shape), str(items), shape]
                      for items, shape in sorted({each[:2] for each in wanted}, reverse=True)])
        self.run_all([[sys.executable, TRANSLATE, writer, self.document(items, shape),
                       self.document(items, shape, writer)]
                      for items, shape, writer in sorted(wanted, reverse=True) if writer != 'own'])
        os.sync()

    @staticmethod
    def run_all(commands):
        """As many at a time as there are processors."""
        running = []
        for command in [*commands, None]:
            while running and (command is None or len(running) == (os.cpu_count() or 1)):
                process = running.pop(0)
                if process.wait():
                    raise RuntimeError(f'{process.args} ended with {process.returncode}')
            if command:
                running.append(subprocess.Popen(command))

    def read(self, path, runs=1):
        return self.timed.run([self.tool, '-r', path], runs)

    def write(self, path, keyword):
        cost = self.timed.once([self.tool, '-w', path, keyword])
        rest_from(path)
        return cost

    def write_new(self, path, runs=1):
        """A keyword that is not in the file yet."""
        costs = []
        for _ in range(runs):
            self.writes += 1
            costs.append(self.write(path, f'run {self.writes} of {os.getpid()}'))
        return costs

    def write_first(self, source, path):
        """The first time that this program writes somebody's document."""
        shutil.copyfile(source, path)
        with open(path, 'rb') as file:
            os.fsync(file.fileno())
        rest_from(path)
        return self.write_new(path)[0]

    def table(self):
        for writer in self.writers:
            self.table_of(writer)

    def table_of(self, writer):
        source = self.document(self.items, writer=writer)
        size = os.path.getsize(source)
        work, copy = (os.path.join(self.folder, name) for name in ('work', 'copy'))
        shutil.copyfile(source, copy)
        print(f'\nA document of {self.items:,} items by the writer "{writer}", {size / 1e6:.1f} MB; '
              f'medians of {self.runs} runs\n')
        print(HEADING)
        drained = self.timed.drained

        def cat():
            return drained(['/bin/cat', source])

        def cp():
            return copy_synced(self.timed, source, copy)

        first, other = interleaved(lambda: self.write_first(source, work), cp, self.runs)
        print_pair('-w, the first time : cp and sync', first, other, 4, 2)
        again, other = interleaved(lambda: self.write_new(work)[0], cp, self.runs)
        print_pair('-w, again : cp and sync', again, other, 3, 1.5)
        read, other = interleaved(lambda: drained([self.tool, '-r', source]), cat, self.runs)
        print_pair('-r : cat into a drained pipe', read, other, 5, 2)
        print_share('peak memory of -w, the first time : file', first.peak, size, 1.5, 1.3)
        print_share('peak memory of -w, again : file', again.peak, size, 1.5, 1.3)
        print_share('peak memory of -r : file', read.peak, size, 1.2, 1.05)
        ours, other = interleaved(lambda: drained([self.read_titles, source]), cat, self.runs)
        print_pair('library, load and read titles : cat', ours, other, 10, 5)
        print_share('peak memory of that : file', ours.peak, size)
        if writer == 'own':
            self.table_of_own(source, work, cp, cat)
        os.remove(work)
        os.remove(copy)

    def table_of_own(self, source, work, cp, cat):
        """What does not depend on who wrote a document."""
        self.write(work, 'equal')
        ours, other = interleaved(lambda: self.write(work, 'equal'), cp, self.runs)
        print_pair('-w, equal keywords : cp and sync', ours, other)
        ours, other = interleaved(
            lambda: self.timed.drained([self.read_titles, '-r', source]), cat, self.runs)
        print_pair('library, load, read titles and release : cat', ours, other)
        small = self.document(10)
        ours, other = interleaved(lambda: self.read(small)[0],
                                  lambda: self.timed.once(['/bin/cat', small]), self.runs * 10)
        print_pair('-r, 10 items : cat', ours, other, 2, 1.3)

    def growth(self):
        heading = ''.join(f'{items:>14,}' for items in (SIZES[:2] if self.quick else SIZES))
        print(f'\nTime for each item, ns{"":8}{heading}{"most : least":>16}{"must":>7}{"aim":>6}')
        for writer in self.writers:
            for shape in SHAPES:
                for mode, function in (('-r', self.read), ('-w', self.write_new)):
                    self.growth_of(writer, shape, mode, function)

    def growth_of(self, writer, shape, mode, function):
        sizes = self.sizes(writer, shape)
        costs = [[] for _ in sizes]
        for number in range(5 if self.quick else 13):
            for index, items in enumerate(sizes):
                # half a gigabyte is written in every fourth round only: a disk that has to take
                # tens of them is no longer at rest for minutes
                if mode == '-w' and items > 100_000 and number % 4 != 0:
                    continue
                # The small ones several times, and the mean of it: where a processor is fast and
                # slow by turns, large documents meet the mean of both speeds, and small ones only
                # one.
                runs = max(1, 100_000 // items)
                document = self.document(items, shape, writer)
                wall = sum(cost.wall for cost in function(document, runs))
                if number > 0:
                    costs[index].append(wall / runs / items * 1e9)
        medians = [statistics.median(each) for each in costs]
        ratio = max(medians) / min(medians)
        missing = 0 if self.quick else len(SIZES) - len(sizes)
        print(f'{writer + ", " + shape + " " + mode:30}' + ''.join(f'{m:14.0f}' for m in medians) +
              f'{"":14}' * missing + f'{ratio:15.2f}x{verdict(ratio, 1.35, 1.1)}', flush=True)

    def others(self):
        """Programs that take the whole file apart; one run each, since they take long."""
        large = self.document(self.items)
        size = os.path.getsize(large)
        out = os.path.join(self.folder, 'out')
        print('\nOther readers of property lists, on the same document but for the last')
        load = f'import plistlib\nwith open({large!r}, "rb") as file: d = plistlib.load(file)\n'
        save = f'with open({out!r}, "wb") as file: ' \
               'plistlib.dump(d, file, fmt=plistlib.FMT_BINARY, sort_keys=False)\n'
        self.alone('Python, read', [sys.executable, '-c', load], size)
        self.alone('Python, read and write', [sys.executable, '-c', load + save], size)
        library = ctypes.util.find_library('plist-2.0')
        if not library:
            print('libplist is not installed')
            return

        # plistutil copies what is in the format asked for, so the library is called
        def libplist(path, *, writes):
            write = 'out, n = ctypes.c_void_p(), ctypes.c_uint32()\n' \
                    'p.plist_to_bin(root, ctypes.byref(out), ctypes.byref(n))\nassert n.value\n'
            return [sys.executable, '-c',
                    f'import ctypes, os\np = ctypes.CDLL({library!r})\n'
                    f'd = open({path!r}, "rb").read()\nroot = ctypes.c_void_p()\n'
                    'p.plist_from_bin(d, ctypes.c_uint32(len(d)), ctypes.byref(root))\n'
                    'assert root\n' + (write if writes else '') + 'os._exit(0)\n']
        self.alone('libplist, parse', libplist(large, writes=False), size)
        small = self.document(10_000)
        self.alone('libplist, parse and write 10,000 items', libplist(small, writes=True),
                   os.path.getsize(small))

    def alone(self, label, command, size):
        try:
            cost = self.timed.once(command)
        except subprocess.CalledProcessError as error:
            print(f'{label:46}not measured: {error}')
            return
        print(f'{label:46}{cost.wall * 1000:8.0f} ms   peak {cost.peak / 1e6:6.0f} MB, '
              f'{cost.peak / size:.1f}x the file', flush=True)


def names_of(known):
    """An argument that lists some of these names."""
    def parsed(text):
        names = text.split(',')
        for name in names:
            if name not in known:
                raise argparse.ArgumentTypeError(f'"{name}" is none of {", ".join(known)}')
        return [name for name in known if name in names]
    return parsed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('build')
    parser.add_argument('--quick', action='store_true')
    parser.add_argument('--folder')
    parser.add_argument('--processor', type=int)
    parser.add_argument('--items', type=int, default=100_000)
    parser.add_argument('--writers', type=names_of(WRITERS), default=list(WRITERS))
    parser.add_argument('--parts', type=names_of(PARTS))
    parser.add_argument('--all-sizes', action='store_true')
    options = parser.parse_args()
    options.parts = options.parts or [part for part in PARTS if part != 'others' or not options.quick]
    folder = tempfile.mkdtemp(dir=options.folder)
    try:
        bench = Bench(folder, options)
        kind = subprocess.run(['stat', '-f', '-c', '%T', folder], capture_output=True, text=True,
                              check=False).stdout.strip()
        bench.make_documents()
        processor = options.processor
        if processor is None:
            processor = max(os.sched_getaffinity(0))
        os.sched_setaffinity(0, {processor})
        load = os.getloadavg()[0]
        print(f'{time.strftime("%Y-%m-%d %H:%M")}, processor {processor} of {os.cpu_count()}, '
              f'load {load:.1f}, file system {kind}')
        for part in options.parts:
            getattr(bench, part)()
    finally:
        shutil.rmtree(folder)


if __name__ == '__main__':
    main()
