"""What a window manager does, where none runs: it asks a window to close, and it iconifies one, as the Inter-Client
Communication Conventions Manual has it (sections 4.2.8.1 and 4.1.4). No tool of the system does either."""

import contextlib
import ctypes

ICONIC = 3
CLIENT_MESSAGE = 33


@contextlib.contextmanager
def connection():
    x = ctypes.CDLL("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x.XOpenDisplay(None))
    try:
        yield x, display, lambda name: ctypes.c_ulong(x.XInternAtom(display, name, 0))
    finally:
        x.XCloseDisplay(display)


def ask_to_close(window):
    with connection() as (x, display, atom):
        # An XClientMessageEvent. On a little-endian machine of 64 bits each of its fields, padded, is a long.
        event = (ctypes.c_long * 24)(CLIENT_MESSAGE, 0, 1, display.value, window, atom(b"WM_PROTOCOLS").value, 32,
                                     atom(b"WM_DELETE_WINDOW").value)
        x.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), event)


def iconify(window):
    with connection() as (x, display, atom):
        state = atom(b"WM_STATE")
        x.XChangeProperty(display, ctypes.c_ulong(window), state, state, 32, 0, (ctypes.c_long * 2)(ICONIC, 0), 2)
        x.XUnmapWindow(display, ctypes.c_ulong(window))
