"""The random source: two 16-bit multiply-with-carry generators and Marsaglia's polar method.

Words are 32 bits, kept in Python integers and masked after every step, so the arithmetic is exact.
"""
import math

MASK = 0xFFFFFFFF
TO_UNIT = 2.3283064365386963e-10  # 2^-32


class RandomGenerator:
    """State of the process: the words z and w, and the normal deviate kept for the next call.

    Seeding replaces the words but leaves the kept deviate, so it passes from one run of a batch to
    the next.
    """

    def __init__(self):
        self.z = 1
        self.w = 1
        self.kept_deviate = None

    def seed(self, first, second):
        self.z = first & MASK if first & MASK > 1 else 1
        self.w = second & MASK if second & MASK > 1 else 1

    def next_word(self):
        self.z = (36969 * (self.z & 0xFFFF) + (self.z >> 16)) & MASK
        self.w = (18000 * (self.w & 0xFFFF) + (self.w >> 16)) & MASK
        return ((self.z << 16) & MASK) ^ (self.w & 0xFFFF)

    def uniform(self):
        return self.next_word() * TO_UNIT

    def accept(self, p):
        if not p > 0:
            return False
        if p >= 1:
            return True
        return p > self.uniform()

    def normal(self):
        """The deviate of the second word of a pair comes first, that of the first word next."""
        if self.kept_deviate is not None:
            deviate, self.kept_deviate = self.kept_deviate, None
            return deviate
        while True:
            r1 = (self.next_word() + 1.0) / 4294967297.0 * 2.0 - 1.0
            r2 = (self.next_word() + 1.0) / 4294967297.0 * 2.0 - 1.0
            s = r1 * r1 + r2 * r2
            if s < 1 and s != 0:
                break
        f = math.sqrt(-2 * math.log(s) / s)
        self.kept_deviate = f * r1
        return f * r2
