"""What may be picked or listed and is no file that ends. Each is made at a path in an empty folder, and may return what
somebody goes on doing to it; that returns whether to go on."""

import contextlib
import functools
import os
import socket
import threading

from bombs import png

LARGEST = 64 << 20


def endless_pipe(path):
    os.mkfifo(path)
    # Open for both, so that neither end waits for the other; the check's end closes it.
    end = os.open(path, os.O_RDWR | os.O_NONBLOCK)

    def write():
        with contextlib.suppress(BlockingIOError):
            os.write(end, b"\xff\xd8\xff\xe0" * 4096)
        return True
    return write


def local_socket(path):
    with socket.socket(socket.AF_UNIX) as listener:
        # The whole path may be too long for an address.
        here = os.open(path.parent, os.O_PATH)
        listener.bind(f"/proc/self/fd/{here}/{path.name}")
        os.close(here)


def sparse(path, size):
    path.write_bytes(png(40, 40))
    os.truncate(path, size)


def growing(path):
    """A good picture that somebody goes on writing to, faster than it can be read; it takes no room on the disk."""
    size = 1 << 20
    sparse(path, size)

    def grow():
        nonlocal size
        size += 1 << 20
        os.truncate(path, size)
        return size < 1 << 42
    return grow


def shrinking(path):
    def change():
        path.write_bytes(png(400, 400) + bytes(8 << 20))
        os.truncate(path, 100)
        return True
    change()
    return change


def link_to(target):
    return lambda path: path.symlink_to(target)


# Name, whether it may be handed over, how to make it.
ITEMS = [
    ("pipe", False, os.mkfifo),
    ("pipe that never ends", False, endless_pipe),
    ("folder", False, os.mkdir),
    ("socket", False, local_socket),
    ("endless device", False, link_to("/dev/zero")),
    ("link to itself", False, link_to("photo.jpg")),
    ("file that grows", True, growing),
    ("file that shrinks", True, shrinking),
    ("file of a terabyte", False, functools.partial(sparse, size=1 << 40)),
    ("file one byte too large", False, functools.partial(sparse, size=LARGEST + 1)),
    ("file as large as may be", True, functools.partial(sparse, size=LARGEST)),
]


@contextlib.contextmanager
def made(make, path):
    over = threading.Event()
    work = make(path)

    def run():
        while work and not over.is_set() and work():
            pass

    thread = threading.Thread(target=run)
    thread.start()
    try:
        yield path
    finally:
        over.set()
        thread.join()
