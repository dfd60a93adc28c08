"""The numbers that writers of archives give to what they write."""
from array import array
from collections import deque

from stored import NULL

NUMBERED = 10   # the entry of a platform archive that nothing refers to, where there are as many


class Numbering:
    """Which entries there are, in the order of their numbers, and the number of each.

    An entry is one of the source, its twin (TWIN added) or none of it."""
    TWIN, NEW = 1 << 31, (1 << 32) - 1

    def __init__(self, source):
        self.source = source
        self.order = array('I', [0])
        self.numbers = array('I', bytes(4 * len(source.entries)))
        self.twins = {}

    def number(self, holder, target):
        """What a record, or "$top", as none, calls an entry."""
        return self.numbers[target]

    def assign(self, holder, target):
        """Gives an entry its number when it has none yet, and answers whether it had none."""
        if target == 0 or self.numbers[target] != 0:
            return False
        self.numbers[target] = len(self.order)
        self.order.append(target)
        return True

    def tops(self):
        found = []
        for value in self.source.tops.values():
            self.source.mention(value, found)
        return found

    def by_level(self):
        pending = deque()
        for target in self.tops():
            if self.assign(0, target):
                pending.append(target)
        while pending:
            holder = pending.popleft()
            if not self.source.is_record(holder):
                continue
            found = []
            own = self.source.mentioned(self.source.entries[holder], found)
            for target in found:
                if self.assign(holder, target):
                    pending.append(target)
            if own is not None:
                self.assign(holder, own)
        return self

    def by_depth(self):
        stack = [(0, iter(self.tops()), None)]
        while stack:
            holder, targets, own = stack[-1]
            for target in targets:
                if self.assign(holder, target) and self.source.is_record(target):
                    found = []
                    its_own = self.source.mentioned(self.source.entries[target], found)
                    stack.append((target, iter(found), its_own))
                    break
            else:
                stack.pop()
                if own is not None:
                    self.assign(holder, own)
        return self

    def backwards(self):
        self.by_level()
        count = len(self.order)
        self.order = array('I', [0]) + self.order[:0:-1]
        for at, number in enumerate(self.numbers):
            if number != 0:
                self.numbers[at] = count - number
        return self


class PlatformNumbering(Numbering):
    """Has some scalars be two entries, and one entry nobody's."""

    def is_twin(self, holder, target):
        """Dates are objects of their own, and null is one entry or several, as the source says."""
        if (holder * 7 + target) % 5 != 0 or self.source.kind(self.source.entries[target]) in (3, 0xD):
            return False
        return self.source.raw(self.source.entries[target]) != NULL

    def number(self, holder, target):
        if target in self.twins and self.is_twin(holder, target):
            return self.twins[target]
        return self.numbers[target]

    def assign(self, holder, target):
        if len(self.order) == NUMBERED:
            self.order.append(self.NEW)
        if target != 0 and target not in self.twins and self.is_twin(holder, target):
            self.twins[target] = len(self.order)
            self.order.append(target | self.TWIN)
            return False
        if target in self.twins and self.is_twin(holder, target):
            return False
        return super().assign(holder, target)
