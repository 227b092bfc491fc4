"""What may be picked or listed and is no file that ends. Each makes one in a folder, named like a photo, for a while."""

import contextlib
import os
import pathlib
import socket
import threading

import png

LARGEST = 64 << 20


@contextlib.contextmanager
def beside(work):
    """Runs `work` again and again until the end; it returns whether to go on."""
    over = threading.Event()

    def run():
        while not over.is_set() and work():
            pass

    thread = threading.Thread(target=run)
    thread.start()
    try:
        yield
    finally:
        over.set()
        thread.join()


@contextlib.contextmanager
def pipe(folder):
    path = pathlib.Path(folder, "photo.jpg")
    os.mkfifo(path)
    yield path


@contextlib.contextmanager
def endless_pipe(folder):
    with pipe(folder) as path:
        # Open for both, so that neither end waits for the other.
        end = os.open(path, os.O_RDWR | os.O_NONBLOCK)

        def write():
            with contextlib.suppress(BlockingIOError):
                os.write(end, b"\xff\xd8\xff\xe0" * 4096)
            return True

        with beside(write):
            yield path
        os.close(end)


@contextlib.contextmanager
def folder_named_photo(folder):
    path = pathlib.Path(folder, "photo.jpg")
    path.mkdir()
    yield path


def link_to(target):
    @contextlib.contextmanager
    def make(folder):
        path = pathlib.Path(folder, "photo.jpg")
        path.symlink_to(target)
        yield path
    return make


def growing(start):
    """A good picture that somebody goes on writing to, faster than it can be read; it takes no room on the disk."""
    @contextlib.contextmanager
    def make(folder):
        path = pathlib.Path(folder, "photo.png")
        path.write_bytes(png.png(40, 40))
        os.truncate(path, start)
        size = start

        def grow():
            nonlocal size
            size += 1 << 20
            os.truncate(path, size)
            return size < 1 << 42

        with beside(grow):
            yield path
    return make


@contextlib.contextmanager
def shrinking(folder):
    path = pathlib.Path(folder, "photo.png")

    def change():
        path.write_bytes(png.png(400, 400) + bytes(8 << 20))
        os.truncate(path, 100)
        return True

    change()
    with beside(change):
        yield path


def sparse(size):
    @contextlib.contextmanager
    def make(folder):
        path = pathlib.Path(folder, "photo.png")
        path.write_bytes(png.png(40, 40))
        os.truncate(path, size)
        yield path
    return make


@contextlib.contextmanager
def local_socket(folder):
    path = pathlib.Path(folder, "photo.jpg")
    with socket.socket(socket.AF_UNIX) as listener:
        # The whole path may be too long for an address.
        here = os.open(folder, os.O_PATH)
        listener.bind(f"/proc/self/fd/{here}/photo.jpg")
        os.close(here)
        yield path


@contextlib.contextmanager
def nothing(folder):
    yield pathlib.Path(folder, "photo.jpg")


# Name, whether it may be handed over, how to make it.
ITEMS = [
    ("pipe", False, pipe),
    ("pipe that never ends", False, endless_pipe),
    ("folder", False, folder_named_photo),
    ("socket", False, local_socket),
    ("nothing", False, nothing),
    ("endless device", False, link_to("/dev/zero")),
    ("device of random bytes", False, link_to("/dev/urandom")),
    ("terminal", False, link_to("/dev/tty")),
    ("link to itself", False, link_to("photo.jpg")),
    ("link to nothing", False, link_to("missing.jpg")),
    ("link to a folder", False, link_to("/")),
    ("file that grows", True, growing(1 << 20)),
    ("file that grows beyond the limit", True, growing(LARGEST - (2 << 20))),
    ("file that shrinks", True, shrinking),
    ("file of a terabyte", False, sparse(1 << 40)),
    ("file one byte too large", False, sparse(LARGEST + 1)),
    ("file as large as may be", True, sparse(LARGEST)),
]
