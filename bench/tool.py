"""What the tool and the library cost, beside reading and copying the file: medians of interleaved
runs on one processor with a warm cache.

    tool.py BUILD-FOLDER [--quick] [--folder FOLDER] [--processor NUMBER]

--quick leaves out the documents of a million items, the other programs, and most of the runs.
After each file that is written, ours or cp's, there is a pause, so that the disk can come to rest.
Documents are made in a new folder in FOLDER (the usual one for temporary files) and removed
afterwards: about 2 GB without --quick.  Which file system that is matters for copying and writing.

"wall" is what a clock shows and what the ratios are of; "cpu" is the processor time of both ends.
"""
import argparse
import ctypes.util
import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

SIZES = (10_000, 100_000, 1_000_000)
SHAPES = ('flat', 'deep', 'mixed')
# After each file that is written there is a pause for as long as a disk of this speed, in bytes a
# second, takes for it.  Without, a small document pays for a large one that came before.
PACE = 200e6


class Cost:
    """What one run took: seconds by the clock, of processor time, and the peak in bytes."""

    def __init__(self, wall, cpu, peak):
        self.wall, self.cpu, self.peak = wall, cpu, peak


def own_cpu():
    usage = resource.getrusage(resource.RUSAGE_SELF)
    return usage.ru_utime + usage.ru_stime


class Timed:
    """Runs programs by way of a small one, which measures them."""

    def __init__(self, build):
        self.program = os.path.join(build, 'bench', 'timed')

    def run(self, command, runs=1, drained=False):
        """The costs of so many runs; output goes nowhere, or into a pipe that is drained."""
        options = ['-d'] if drained else []
        done = subprocess.run([self.program, *options, str(runs), *command], text=True,
                              stdout=subprocess.PIPE, check=True)
        return [Cost(float(wall), float(cpu), int(peak))
                for wall, cpu, peak in map(str.split, done.stdout.splitlines())]

    def once(self, command):
        return self.run(command)[0]

    def drained(self, command):
        return self.run(command, drained=True)[0]


def copy_synced(timed, source, copy):
    """cp onto a copy that is there already, and a sync of the copy."""
    copying = timed.once([shutil.which('cp'), source, copy])
    started, before = time.perf_counter(), own_cpu()
    file = os.open(copy, os.O_RDONLY)
    os.fsync(file)
    os.close(file)
    cost = Cost(copying.wall + time.perf_counter() - started,
                copying.cpu + own_cpu() - before, 0)
    rest_from(copy)
    return cost


def rest_from(written):
    time.sleep(os.path.getsize(written) / PACE)


def interleaved(ours, other, runs):
    """Median costs of two functions that are called by turns; the first call of each is not
    counted."""
    costs = [[], []]
    for number in range(runs + 1):
        for index, function in enumerate((ours, other)):
            cost = function()
            if number > 0:
                costs[index].append(cost)
    return tuple(Cost(*(statistics.median(getattr(cost, what) for cost in each)
                        for what in ('wall', 'cpu', 'peak'))) for each in costs)


HEADING = f'{"":46}{"ours":>11}{"other":>11}{"wall":>8}{"cpu":>8}{"must":>7}{"aim":>6}'


def verdict(ratio, must, aim):
    if must is None:
        return ''
    reached = 'aim' if ratio <= aim else 'must' if ratio <= must else 'MISSED'
    return f'{must:6.2f}x{aim:5.2f}x  {reached}'


def print_pair(label, ours, other, must=None, aim=None):
    ratio = ours.wall / other.wall
    cpu = f'{ours.cpu / other.cpu:7.2f}x' if other.cpu else f'{"":8}'
    print(f'{label:46}{ours.wall * 1000:8.2f} ms{other.wall * 1000:8.2f} ms{ratio:7.2f}x{cpu}'
          f'{verdict(ratio, must, aim)}', flush=True)


def print_share(label, used, size, must=None, aim=None):
    print(f'{label:46}{used / 1e6:8.1f} MB{size / 1e6:8.1f} MB{used / size:7.2f}x{"":8}'
          f'{verdict(used / size, must, aim)}', flush=True)


class Bench:
    def __init__(self, build, folder, quick):
        self.tool, self.make = (os.path.join(build, 'bin', name)
                                for name in ('tavlin-keywords', 'outline-make'))
        self.read_titles = os.path.join(build, 'bench', 'read-titles')
        self.timed = Timed(build)
        self.folder = folder
        self.quick = quick
        self.runs = 7 if quick else 21
        self.sizes = SIZES[:2] if quick else SIZES
        self.writes = 0

    def document(self, items, shape='mixed'):
        return os.path.join(self.folder, f'{shape}-{items}')

    def make_documents(self):
        """As many at a time as there are processors, the largest first."""
        wanted = [(items, shape) for items in reversed(self.sizes) for shape in SHAPES]
        wanted.append((10, 'mixed'))
        making = []
        for items, shape in wanted:
            if len(making) == (os.cpu_count() or 1):
                self.wait_for(making.pop(0))
            making.append(subprocess.Popen([self.make, self.document(items, shape), str(items),
                                            shape]))
        for process in making:
            self.wait_for(process)
        os.sync()

    @staticmethod
    def wait_for(process):
        if process.wait():
            raise RuntimeError(f'{process.args} ended with {process.returncode}')

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

    def table(self):
        large, small = self.document(100_000), self.document(10)
        size = os.path.getsize(large)
        work, copy = (os.path.join(self.folder, name) for name in ('work', 'copy'))
        shutil.copyfile(large, work)
        shutil.copyfile(large, copy)
        print(f'A document of 100,000 items, {size / 1e6:.1f} MB; medians of {self.runs} runs\n')
        print(HEADING)

        once, drained = self.timed.once, self.timed.drained

        def cat():
            return drained(['/bin/cat', large])

        def cp():
            return copy_synced(self.timed, work, copy)

        ours, other = interleaved(lambda: drained([self.tool, '-r', large]), cat, self.runs)
        print_pair('-r : cat into a drained pipe', ours, other, 6, 2)
        peak_of_reading = ours.peak
        ours, other = interleaved(lambda: self.write_new(work)[0], cp, self.runs)
        print_pair('-w, other keywords : cp and sync', ours, other, 6, 2)
        peak_of_writing = ours.peak
        self.write(work, 'equal')
        ours, other = interleaved(lambda: self.write(work, 'equal'), cp, self.runs)
        print_pair('-w, equal keywords : cp and sync', ours, other)
        ours, other = interleaved(lambda: self.read(small)[0], lambda: once(['/bin/cat', small]),
                                  self.runs * 10)
        print_pair('-r, 10 items : cat', ours, other, 2, 1.3)
        print_share('peak memory of -r : file size', peak_of_reading, size, 2, 1.1)
        print_share('peak memory of -w : file size', peak_of_writing, size, 3, 2)
        ours, other = interleaved(lambda: drained([self.read_titles, large]), cat, self.runs)
        print_pair('library, load and read titles : cat', ours, other, 10, 5)
        print_share('peak memory of that : file size', ours.peak, size)
        ours, other = interleaved(lambda: drained([self.read_titles, '-r', large]), cat, self.runs)
        print_pair('library, the same and release : cat', ours, other)

    def growth(self):
        heading = ''.join(f'{items:>14,}' for items in self.sizes)
        print(f'\nTime for each item, ns{"":8}{heading}{"most : least":>16}{"must":>7}{"aim":>6}')
        for shape in SHAPES:
            documents = [self.document(items, shape) for items in self.sizes]
            for mode, function in (('-r', self.read), ('-w', self.write_new)):
                costs = [[] for _ in documents]
                for number in range(5 if self.quick else 21):
                    for index, items in enumerate(self.sizes):
                        # half a gigabyte is written in every fourth round only: a disk that
                        # has to take tens of them is no longer at rest for minutes
                        if mode == '-w' and items > 100_000 and number % 4 != 0:
                            continue
                        # The small ones several times, and the mean of it: where a processor is
                        # fast and slow by turns, large documents meet the mean of both speeds,
                        # and small ones only one.
                        runs = max(1, 100_000 // items)
                        wall = sum(cost.wall for cost in function(documents[index], runs))
                        if number > 0:
                            costs[index].append(wall / runs / items * 1e9)
                medians = [statistics.median(each) for each in costs]
                ratio = max(medians) / min(medians)
                print(f'{shape + " " + mode:30}' + ''.join(f'{m:14.0f}' for m in medians) +
                      f'{ratio:15.2f}x{verdict(ratio, 1.35, 1.1)}', flush=True)

    def others(self):
        """Programs that take the whole file apart; one run each, since they take long."""
        large = self.document(100_000)
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


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('build')
    parser.add_argument('--quick', action='store_true')
    parser.add_argument('--folder')
    parser.add_argument('--processor', type=int)
    options = parser.parse_args()
    folder = tempfile.mkdtemp(dir=options.folder)
    try:
        bench = Bench(os.path.abspath(options.build), folder, options.quick)
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
        bench.table()
        bench.growth()
        if not options.quick:
            bench.others()
    finally:
        shutil.rmtree(folder)


if __name__ == '__main__':
    main()
