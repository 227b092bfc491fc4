"""Stories of customers, told through the real app against a real server, from outside.

usage: stories.py STORY APP SCRIPTED_APP SERVICE RELEASE_APP

Each story has a network of its own where the kernel grants one, since the app's port is built in; otherwise the stories
wait for one another.
"""

import importlib
import pathlib
import sys

HERE = pathlib.Path(__file__).parent
sys.path.insert(0, str(HERE))
from stage import STORIES, Stage, in_own_network


def main(folder=HERE):
    for file in sorted(folder.glob("story_*.py")):
        importlib.import_module(file.stem)
    lock = in_own_network()
    STORIES[sys.argv[1]](Stage(*sys.argv[2:6]))
    del lock


if __name__ == "__main__":
    main()
