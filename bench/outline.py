"""What tavlin costs beside reading and copying the files: medians of interleaved runs.

    outline.py BUILD-FOLDER [--quick] [--folder FOLDER]

One document of 100,000 items against cat into a drained pipe, both on one processor, and thousands
of small ones with one and with two processes.  --quick takes fewer runs and fewer documents.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time

from measuring import HEADING, Timed, interleaved, print_pair, print_share

SMALL_ITEMS = 12


class OutlineBench:
    def __init__(self, build, folder, quick):
        self.programs = os.path.join(build, 'bin')
        self.tavlin = os.path.join(self.programs, 'tavlin')
        self.keywords = os.path.join(self.programs, 'tavlin-keywords')
        self.timed = Timed(build)
        self.folder = folder
        self.runs = 5 if quick else 15
        self.small_count = 2000 if quick else 10_000

    def path(self, name):
        return os.path.join(self.folder, name)

    def make_documents(self):
        make = os.path.join(self.programs, 'outline-make')
        subprocess.run([make, self.path('large.tavlin'), '100000'], check=True)
        subprocess.run([make, self.path('small.tavlin'), str(SMALL_ITEMS)], check=True)
        os.mkdir(self.path('many'))
        for number in range(self.small_count):
            shutil.copyfile(self.path('small.tavlin'), self.path(f'many/{number:05}.tavlin'))
        subprocess.run([self.tavlin, 'export', '--to=json', '-o', self.path('large.json'),
                        self.path('large.tavlin')], check=True)
        os.sync()

    def one_document(self):
        large = self.path('large.tavlin')
        size = os.path.getsize(large)
        print(f'A document of 100,000 items, {size / 1e6:.1f} MB; medians of {self.runs} runs\n')
        print(HEADING)

        def cat():
            return self.timed.drained(['/bin/cat', large])

        def against_cat(label, must, *arguments):
            ours, other = interleaved(
                lambda: self.timed.drained([self.tavlin, *arguments, large]), cat, self.runs)
            print_pair(f'{label} : cat', ours, other, must, must / 2)
            print_share('  peak memory : file size', ours.peak, size, 3, 1.5)

        against_cat('find', 12, 'find', 'garden [0-9]*7')
        against_cat('show', 15, 'show')
        for form in ('text', 'markdown', 'opml', 'html', 'json'):
            against_cat(f'export --to={form}', 20, 'export', '--to=' + form)
        ours, other = interleaved(lambda: self.timed.once(
            [self.tavlin, 'import', '--force', '-o', self.path('new.tavlin'),
             self.path('large.json')]), cat, self.runs)
        print_pair('import of the exported JSON : cat', ours, other, 40, 20)
        print_share('  peak memory : file size', ours.peak, size, 3, 1.5)
        ours, other = interleaved(
            lambda: self.timed.drained([self.tavlin, 'check', large]),
            lambda: self.timed.drained([self.tavlin, 'show', large]), self.runs)
        print_pair('check : show', ours, other, 3, 1.5)

    def first_line(self):
        times = []
        for _ in range(self.runs):
            began = time.perf_counter()
            process = subprocess.Popen([self.tavlin, 'show', self.path('large.tavlin')],
                                       stdout=subprocess.PIPE)
            process.stdout.readline()
            times.append(time.perf_counter() - began)
            process.kill()
            process.wait()
            process.stdout.close()
        print(f'first line of show after {statistics.median(times) * 1000:.1f} ms (must 50)')

    def many_documents(self):
        many = self.path('many')
        print(f'\n{self.small_count} documents of {SMALL_ITEMS} items, two processes : one\n')
        print(HEADING)
        for command in (['find', 'garden'], ['info']):
            ours, other = interleaved(
                lambda: self.timed.drained([self.tavlin, *command, '-j2', many]),
                lambda: self.timed.drained([self.tavlin, *command, '-j1', many]), self.runs)
            print_pair(f'{command[0]} -j2 : -j1', ours, other, 0.6, 0.5)

    def keywords_of_many(self):
        count = 2000
        files = [self.path(f'many/{number:05}.tavlin') for number in range(count)]
        number = iter(range(1000))

        def add():
            return self.timed.once([self.tavlin, 'keywords', 'add', '-k', f'run {next(number)}',
                                    *files])

        def loop():
            script = 'for f; do %s -w "$f" "$0" >/dev/null; done' % self.keywords
            return self.timed.once(['/bin/sh', '-c', script, f'run {next(number)}', *files])

        ours, other = interleaved(add, loop, 3)
        print_pair(f'keywords add, {count} : a loop of -w', ours, other, 0.3, 0.15)
        if self.small_count < 10_000:
            return
        copies = self.path('copies')
        os.mkdir(copies)

        def add_all():
            return self.timed.once([self.tavlin, 'keywords', 'add', '-k', f'all {next(number)}',
                                    self.path('many')])

        def copy_all():
            script = ('cd "$0" && printf "%s\\0" * | xargs -0 -P "$(nproc)" -n 100 '
                      'sh -c \'for f; do cp "$f" "$0/$f"; sync "$0/$f"; done\' "$1"')
            return self.timed.once(['/bin/sh', '-c', script, self.path('many'), copies])

        ours, other = interleaved(add_all, copy_all, 3)
        print_pair('keywords add, 10,000 : cp and sync of each', ours, other, 1.5, 1)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('build')
    parser.add_argument('--quick', action='store_true')
    parser.add_argument('--folder')
    options, _ = parser.parse_known_args()
    folder = tempfile.mkdtemp(dir=options.folder)
    try:
        bench = OutlineBench(os.path.abspath(options.build), folder, options.quick)
        bench.make_documents()
        processors = os.sched_getaffinity(0)
        os.sched_setaffinity(0, {max(processors)})
        bench.one_document()
        bench.first_line()
        os.sched_setaffinity(0, processors)
        bench.many_documents()
        bench.keywords_of_many()
    finally:
        shutil.rmtree(folder)


if __name__ == '__main__':
    main()
