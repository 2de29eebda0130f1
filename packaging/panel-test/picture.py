"""A picture of the screen, and what its colours say."""

# The program's icons have no other colours than these and dark blue; nothing else on the screen has them.
TICK = (31, 138, 63)
CROSS = (208, 49, 45)
BOLT = (255, 184, 28)
QUESTION = (30, 111, 194)


class Picture:
    def __init__(self, data):
        """`data`: a binary PPM file."""
        fields = data.split(maxsplit=4)
        self.width, self.height = int(fields[1]), int(fields[2])
        self._pixels = memoryview(data)[len(data) - 3 * self.width * self.height:]

    def part(self, area):
        left, top, width, height = area
        return [bytes(self._pixels[3 * (y * self.width + left):3 * (y * self.width + left + width)])
                for y in range(top, top + height)]

    def pixel(self, x, y):
        start = 3 * (y * self.width + x)
        return tuple(self._pixels[start:start + 3])

    def places(self, colour, area):
        """The pixels of exactly this colour; `area`: x, y, width, height."""
        left, top, width, height = area
        wanted = bytes(colour)
        found = []
        for y in range(max(0, top), min(self.height, top + height)):
            start = 3 * (y * self.width + max(0, left))
            row = bytes(self._pixels[start:3 * (y * self.width + min(self.width, left + width))])
            at = row.find(wanted)
            while at >= 0:
                if at % 3 == 0:
                    found.append((max(0, left) + at // 3, y))
                at = row.find(wanted, at + 1)
        return found

    def count(self, colour, area):
        return len(self.places(colour, area))

    def middle(self, colour, area, at_least):
        """The middle of the pixels of this colour, or None when there are fewer than `at_least`."""
        found = self.places(colour, area)
        if len(found) < at_least:
            return None
        columns = [x for x, _ in found]
        rows = [y for _, y in found]
        return (min(columns) + max(columns)) // 2, (min(rows) + max(rows)) // 2

    def is_of_one_colour(self):
        first = bytes(self._pixels[:3])
        return bytes(self._pixels) == first * (self.width * self.height)
