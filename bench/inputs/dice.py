"""A fixed sequence of choices. Of Python's generator only random() is promised to give the same numbers in every
version, so all else is made from it; bytes in bulk come from a hash function.
"""
import hashlib
import random


class Dice:
    def __init__(self, seed):
        self._random = random.Random(seed)

    def below(self, bound):
        return int(self._random.random() * bound)

    def between(self, low, high):
        return low + self.below(high - low + 1)

    def chance(self, percent):
        return self.below(100) < percent

    def pick(self, choices):
        return choices[self.below(len(choices))]

    def picks(self, choices, count):
        return [self.pick(choices) for _ in range(count)]

    def token(self, length, alphabet="0123456789abcdefghijklmnopqrstuvwxyz"):
        return "".join(self.picks(alphabet, length))

    def data(self, size):
        seed = self._random.random().hex()
        return hashlib.shake_128(seed.encode()).digest(size)
