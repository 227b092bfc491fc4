"""A picture that is more than it seems: its name, whether it has to show (None: as it may), and what makes its bytes."""

import functools


class Bomb:
    def __init__(self, name, shows, make, *arguments, quick=False, **more):
        self.name, self.shows, self.quick = name, shows, quick
        self.make = functools.partial(make, *arguments, **more)
