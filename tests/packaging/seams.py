"""Where the sources lean on one platform: each such place is named here with its one file, and nothing else does.

usage: seams.py SOURCE_DIRECTORY

A header that is neither C++'s own, nor portable Qt, nor of a library that all platforms have, and a call, macro or name of
one platform, may stand only in the file whose seam lists it; a seam that its file no longer needs is refused too. The
lines that docs/porting.md quotes must be there.
"""

import pathlib
import re
import subprocess
import sys

FOLDERS = ("api", "app", "check", "demo", "deployments", "screens", "session", "ui")
LIBRARIES = re.compile(r"boost/.*|simdjson\.h|sqlite3\.h|png\.h|xxhash\.h|unicode/.*|httplib\.h|sodium\.h")
# Headers of C++ itself have no ending.
STANDARD = re.compile(r"[a-z_]+")
PLATFORM_QT = re.compile(r"QDBus.*|QtDBus.*|.*/private/.*|private/.*|qpa/.*|Qt(?:X11|Wayland|Win|Mac|Android).*|QJni.*")
# What belongs to one platform or some, by kind. POSIX counts: Windows has none of it.
WORDS = re.compile(r"""
    \bQDBus\w* | \bMAROVENDA_DBUS\b | \borg\.(?:freedesktop|gnome|kde)\b | \bXDG_\w+
  | \bxcb_\w+ | \bQ_OS_\w+ | \b_WIN32\b | \b__(?:APPLE|linux|ANDROID|GLIBC|unix)__\b | \bQt\.platform\b
  | \b(?:malloc_trim|mallopt|mallinfo2?)\b
  | \b(?:_?strtod_l|newlocale|uselocale|freelocale|_create_locale|locale_t)\b
  | (?:(?<![\w.>:])|(?<!\w)(?<=::))(?:fsync|fdatasync|isatty|tcgetattr|tcsetattr|fork|execv[pe]*|pipe2?|dup2?|mmap|poll|ioctl|prctl|chmod|fchmod
      |umask|getuid|geteuid|getpid|kill|sigaction|sigemptyset|sigaddset|sigfillset|sigwait|pthread_\w+|sysconf|getrlimit
      |setrlimit|dlopen|dlsym|inotify_\w+|epoll_\w+|eventfd|memfd_create|getpwuid|statvfs|flock|sched_\w+)\s*\(
  | (?<![\w)>])::(?:open|close|read|write|stat|lstat|unlink|rename|mkdir|link|symlink|raise)\s*\(
  | \bO_(?:RDONLY|WRONLY|RDWR|CREAT|DIRECTORY|CLOEXEC|NOFOLLOW)\b | \bSTD(?:IN|OUT|ERR)_FILENO\b
  | \bSIG(?:TERM|HUP|QUIT|KILL|PIPE|USR1|USR2|CHLD)\b
  | "/(?:proc|sys|usr|etc|dev|tmp|run|var|home)\b
""", re.VERBOSE)

# File: what it has of one platform, and what for. docs/porting.md says what other platforms put there.
SEAMS = {
    "api/FreedMemory.cpp": r"malloc\.h | __GLIBC__ | malloc_trim",
    "app/Activation.cpp": r"XDG_ACTIVATION_TOKEN",
    "app/InstanceLock.cpp": r"fcntl\.h | unistd\.h | sys/file\.h | ::open | ::close | flock | O_\w+",
    "check/Password.cpp": r"termios\.h | unistd\.h | isatty | tcgetattr | tcsetattr | STDIN_FILENO | SIG\w+",
    "check/main.cpp": r"unistd\.h | isatty | STDOUT_FILENO",
    "demo/main.cpp": r"sig\w+ | pthread_sigmask | SIG\w+",
    "screens/logistics/ParseDecimal.cpp": r"x?locale\.h | _WIN32 | __APPLE__ | locale_t | newlocale | _?strtod_l | _create_locale",
    "session/StoreFile.cpp": r"fcntl\.h | unistd\.h | sys/file\.h | ::open | ::close | flock | fsync | fdatasync | O_\w+",
    "ui/Copying.cpp": r"private/qaccessiblequickitem_p\.h | private/qquickitem_p\.h",
    "ui/HeldKeys.cpp": r"xcb_\w+",
    "ui/PlatformSettings.cpp": r"QDBus\w* | MAROVENDA_DBUS | Q_OS_\w+ | XDG_CURRENT_DESKTOP | org\.\w+",
}


def without_comments(text):
    """The code alone, each line where it was."""
    keep_lines = lambda match: match[0] if match[0][0] == '"' else re.sub(r"[^\n]", "", match[0])
    return re.sub(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', keep_lines, text, flags=re.DOTALL)


def is_portable(header):
    if LIBRARIES.fullmatch(header) or STANDARD.fullmatch(header):
        return True
    return header.startswith("Q") and not PLATFORM_QT.fullmatch(header)


def findings(text):
    """Pairs of line and what stands there that is not portable."""
    for number, line in enumerate(without_comments(text).splitlines(), 1):
        if match := re.match(r"\s*#\s*(?:include|import)\s*<([^>]+)>", line):
            if not is_portable(match[1]):
                yield number, match[1]
        else:
            for match in WORDS.finditer(line):
                yield number, match[0].strip(' ("\t')


def sources(root):
    listed = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard", *FOLDERS],
                            stdout=subprocess.PIPE, text=True)
    names = listed.stdout.split() or [str(f.relative_to(root)) for d in FOLDERS for f in (root / d).rglob("*")]
    return sorted(n for n in names if n.endswith((".cpp", ".h", ".qml", ".in")) and (root / n).exists())


def check_sources(root):
    wrong = []
    for name in sources(root):
        allowed = re.compile(SEAMS.get(name, "(?!)"), re.VERBOSE)
        used = set()
        for line, what in findings((root / name).read_text()):
            bare = what.removeprefix("::") if not allowed.fullmatch(what) else what
            if allowed.fullmatch(bare):
                used.add(bare)
            else:
                wrong.append(f"{name}:{line}: {what} belongs to one platform; give it a seam, or a portable way")
        for part in SEAMS.get(name, "").split("|"):
            if part.strip() and not any(re.fullmatch(part.strip(), u) or re.fullmatch(part.strip(), "::" + u) for u in used):
                wrong.append(f"{name}: {part.strip()} is listed in its seam but not there")
    return wrong + [f"{name}: is a seam but no file" for name in SEAMS if not (root / name).exists()]


def check_page(root):
    """A row of docs/porting.md starts with a file, and quotes code of it."""
    page = (root / "docs" / "porting.md").read_text()
    wrong = [f"docs/porting.md: says nothing of {name}" for name in SEAMS if f"`{name}`" not in page]
    for row in re.findall(r"^\| `([^`]+)` \|([^|]*)\|", page, re.MULTILINE):
        file = root / row[0]
        text = file.read_text() if file.is_file() else ""
        wrong += [f"docs/porting.md: {row[0]} has no `{quote}`" for quote in re.findall(r"`([^`]+)`", row[1])
                  if quote not in text]
    return wrong


def main():
    root = pathlib.Path(sys.argv[1])
    wrong = check_sources(root) + check_page(root)
    print("\n".join(wrong) or f"{len(SEAMS)} seams, {len(sources(root))} files looked through")
    sys.exit(bool(wrong))


if __name__ == "__main__":
    main()
