"""The tool against reading and copying the file, in interleaved runs: ratios of medians.

    tool.py TAVLIN-KEYWORDS OUTLINE-MAKE [ITEMS]

Everything runs on one processor with a warm cache.  "cat" is cat into a pipe that another
process drains; "cp" is cp followed by a sync of the copy.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 9


def seconds(command):
    started = time.perf_counter()
    subprocess.run(command, shell=isinstance(command, str), check=True,
                   stdout=subprocess.DEVNULL)
    return time.perf_counter() - started


def pair(label, ours, other, prepare=None):
    times = [[], []]
    for run in range(RUNS + 1):
        for index, command in enumerate((ours, other)):
            if prepare:
                prepare()
            took = seconds(command)
            if run > 0:
                times[index].append(took)
    a, b = (statistics.median(t) for t in times)
    print(f'{label:48} {a * 1000:9.1f} ms {b * 1000:9.1f} ms {a / b:8.2f}x')


def peak(command):
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, _, usage = os.wait4(child.pid, 0)
    child.returncode = 0
    return usage.ru_maxrss * 1024


def main():
    tool, make = (os.path.abspath(path) for path in sys.argv[1:3])
    items = int(sys.argv[3]) if len(sys.argv) > 3 else 100000
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    folder = tempfile.mkdtemp()
    try:
        large, small, copy = (os.path.join(folder, n) for n in ('large', 'small', 'copy'))
        subprocess.run([make, large, str(items)], check=True)
        subprocess.run([make, small, '10'], check=True)
        size = os.path.getsize(large)
        print(f'{items} items, {size / 1e6:.1f} MB')
        print(f'{"":48} {"ours":>12} {"other":>12} {"ratio":>9}')
        pair('-r against cat into a drained pipe', [tool, '-r', large],
             f'cat {large} | cat > /dev/null')
        work = os.path.join(folder, 'work')
        shutil.copy(large, work)
        pair('-w against cp and sync of the copy', [tool, '-w', work, 'x'],
             f'cp {large} {copy} && sync {copy}')
        pair('-r of 10 items against cat', [tool, '-r', small], ['/bin/cat', small])
        for mode in ('-r', '-w'):
            used = peak([tool, mode, work, 'x'])
            print(f'peak memory of {mode} over file size {"":17} {used / 1e6:9.1f} MB '
                  f'{"":12} {used / size:8.2f}x')
        for shape in ('flat', 'deep', 'mixed'):
            per_item = []
            for count in (10000, 100000, 1000000):
                path = os.path.join(folder, 'shape')
                levels = min(count, 200000) if shape == 'deep' else count
                subprocess.run([make, path, str(levels), shape], check=True)
                for mode in ('-r', '-w'):
                    took = statistics.median(seconds([tool, mode, path, 'x']) for _ in range(3))
                    per_item.append(f'{mode} {levels}: {took / levels * 1e9:6.0f} ns')
            print(f'time per item, {shape}: ' + ', '.join(per_item))
    finally:
        shutil.rmtree(folder)


if __name__ == '__main__':
    sys.exit(main())
