"""Running programs and telling what that took, in turns with what they are compared with."""
import os
import resource
import shutil
import statistics
import subprocess
import time

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
