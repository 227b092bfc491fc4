"""What a window manager does, where none runs: it asks a window to close, and it iconifies one, as the Inter-Client
Communication Conventions Manual has it (sections 4.2.8.1 and 4.1.4). No tool of the system does either."""

import contextlib
import ctypes

ICONIC = 3
CLIENT_MESSAGE = 33


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int), ("display", ctypes.c_void_p),
                ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong), ("format", ctypes.c_int),
                ("data", ctypes.c_long * 5)]


class Event(ctypes.Union):
    _fields_ = [("message", ClientMessage), ("room", ctypes.c_long * 24)]


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
        event = Event(message=ClientMessage(CLIENT_MESSAGE, 0, 1, display, window, atom(b"WM_PROTOCOLS"), 32,
                                            (ctypes.c_long * 5)(atom(b"WM_DELETE_WINDOW").value, 0)))
        x.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), ctypes.byref(event))


def iconify(window):
    with connection() as (x, display, atom):
        state = atom(b"WM_STATE")
        x.XChangeProperty(display, ctypes.c_ulong(window), state, state, 32, 0, (ctypes.c_long * 2)(ICONIC, 0), 2)
        x.XUnmapWindow(display, ctypes.c_ulong(window))
