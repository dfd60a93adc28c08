"""Random documents of all writers: a change in place gives the graph that archiving anew gives.

    random_test.py TAVLIN-KEYWORDS [COUNT [SEED]]

Each document is written twice, once with an item of an older version, for which it is archived
anew.  A document in which both differ is told by its seed; with COUNT 1 it is looked at alone, and
kept where the environment's KEPT names a folder.
"""
import os
import random
import subprocess
import sys
import tempfile

from archives import (Difference, MUTABLE_ARRAY, array, attributed, controller, dictionary, node, plain,
                      property_list)
from kinds import KINDS, font
from variants import LAYOUTS, MERGED, VARIANTS, varied
from writers import HANDS, written_by
from writing import idle, is_in, one_graph

# Those say more than numbers: what they hold is other text in another version.
PLAIN = [name for name in KINDS if 'null' not in name]
WORDS = ['a', 'b,c', 'größe', 'zz ' * 40, 'title', 'keywords', 'Helvetica', 'OLNode', '日本', '']


class Maker:
    def __init__(self, dice):
        self.dice = dice
        self.shared = [KINDS[dice.choice(PLAIN)]() for _ in range(3)]

    def value(self, depth=0):
        turn = self.dice.randrange(9)
        if turn < 3:
            return self.dice.choice(['text', 7, 2.5, True, b'data', *WORDS])
        if turn < 5 and depth < 3:
            return [self.value(depth + 1) for _ in range(self.dice.randrange(4))]
        if turn < 6 and depth < 3:
            return {word: self.value(depth + 1) for word in self.dice.sample(WORDS, 2)}
        if turn < 7:
            return self.dice.choice(self.shared)
        if turn < 8:
            return attributed('rich', {'NSFont': font(size=float(self.dice.randrange(9, 12)))})
        return KINDS[self.dice.choice(PLAIN)]()

    def item(self, depth=0):
        data = {key: self.value() for key in self.dice.sample(['title', 'note', 'x', 'y'], 2)}
        count = self.dice.randrange(4) if depth < 3 else 0
        return node(data, [self.item(depth + 1) for _ in range(count)])

    def root(self, keywords, version):
        words = array(keywords, self.dice.choice([MUTABLE_ARRAY, 'NSArray']))
        pairs = [('title', 'T'), ('keywords', words), ('extra', self.value()), ('more', self.value())]
        self.dice.shuffle(pairs)
        data = {'documentProperties': dictionary(pairs), 'frame': self.value()}
        if self.dice.randrange(4) == 0:
            data['words'] = words
        return node(data, [self.item() for _ in range(self.dice.randrange(1, 5))] +
                    [node({'title': 'of some version'}, version=version)])


def made(seed, version):
    """A document; but for the version of one item it is the same each time."""
    dice = random.Random(seed)
    keywords = [dice.choice(WORDS) for _ in range(dice.randrange(5))] + ['zzgone']
    root = Maker(dice).root(keywords, version)
    plist = varied(dice.choice(sorted(VARIANTS.keys() - {MERGED})), property_list(controller(root)))
    hand, layout = dice.choice(list(HANDS)), dice.choice(list(LAYOUTS))
    return LAYOUTS[layout](written_by(hand, plain(plist))), hand, layout


def steps(seed):
    """Lists of keywords, one after the other."""
    dice = random.Random(-seed - 1)
    return [[dice.choice([*WORDS, 'new %d' % number]) for number in range(dice.randrange(6))]
            for _ in range(3)]


class Check:
    def __init__(self, tool, folder):
        self.tool, self.path = tool, os.path.join(folder, 'document.tavlin')

    def written(self, data, keywords):
        with open(self.path, 'wb') as stream:
            stream.write(data)
        done = subprocess.run([self.tool, '-w', self.path, *keywords], capture_output=True, timeout=60)
        if done.returncode or done.stderr:
            raise Difference('status %d, %s' % (done.returncode, done.stderr.decode()))
        with open(self.path, 'rb') as stream:
            return stream.read()

    def run(self, seed):
        (newer, hand, layout), (older, _, _) = made(seed, 2), made(seed, 1)
        try:
            self.compare(newer, older, steps(seed))
        except Difference as difference:
            if 'KEPT' in os.environ:
                for name, data in (('newer', newer), ('older', older)):
                    with open(os.path.join(os.environ['KEPT'], '%s-%d' % (name, seed)), 'wb') as stream:
                        stream.write(data)
            raise Difference('seed %d, %s, %s: %s' % (seed, hand, layout, difference)) from None

    def compare(self, newer, older, steps_):
        unused = len(idle(newer))
        holds = is_in('zzgone', newer)
        for keywords in steps_:
            newer, older = self.written(newer, keywords), self.written(older, keywords)
            one_graph(newer, older)
            if self.written(newer, keywords) != newer:
                raise Difference('a second write changes the file')
            if len(idle(newer)) > unused:
                raise Difference('%d entries became %d that nothing refers to' % (unused, len(idle(newer))))
            if is_in('zzgone', newer) and not is_in('zzgone', older) and holds:
                raise Difference('a keyword that was removed is still there')


def main():
    tool = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 150
    first = int(sys.argv[3]) if len(sys.argv) > 3 else 0
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        check = Check(tool, folder)
        for seed in range(first, first + count):
            try:
                check.run(seed)
            except Difference as difference:
                failed += 1
                print(str(difference)[:600], flush=True)
    print('%d documents, %d failed' % (count, failed))
    sys.exit(1 if failed else 0)


if __name__ == '__main__':
    main()
