"""What a window manager does, where none runs: it iconifies a window, as the Inter-Client Communication Conventions Manual
has it (section 4.1.4). No tool of the system does."""

import ctypes

ICONIC = 3


def iconify(window):
    x = ctypes.CDLL("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x.XOpenDisplay(None))
    state = ctypes.c_ulong(x.XInternAtom(display, b"WM_STATE", 0))
    x.XChangeProperty(display, ctypes.c_ulong(window), state, state, 32, 0, (ctypes.c_long * 2)(ICONIC, 0), 2)
    x.XUnmapWindow(display, ctypes.c_ulong(window))
    x.XCloseDisplay(display)
