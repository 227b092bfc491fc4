"""Measures the alternative to the app: the same home screen as a page in a browser."""

import contextlib
import os
import pathlib
import subprocess
import threading
import time

from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

PAGE = """<!doctype html><html lang="es"><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<title>Marovenda</title><style>
body {{ font: 17px Inter, sans-serif; margin: 24px; background: #F2F2F7 }}
.card {{ background: white; border-radius: 16px; padding: 16px; margin: 12px 0 }}
.blue {{ background: #007AFF; color: white }} small {{ color: #8E8E93 }} b {{ float: right; color: #34C759 }}
</style><h3>Hola, Ana María Batista de Arosemena</h3><div class="card blue"><h2>Mi Resumen</h2>{count} Paquetes</div>{rows}
<script>new PerformanceObserver(() => fetch("/shown")).observe({{ type: "paint", buffered: true }})</script></html>"""

# As bench_app's walk: three seconds until the login screen is left, then each screen and the home screen for 0.7 seconds each,
# which slide in as long as the app's.
TOUR = b"""<style>
@keyframes push { from { transform: translateX(100%) } }
section { animation: push 0.35s ease-out }
</style><script>
const home = document.getElementById("home"), all = [...document.querySelectorAll("section")]
const show = one => all.forEach(each => each.hidden = each !== one)
const steps = all.filter(one => one.id === "").flatMap(one => [one, home])
setTimeout(() => {
    show(home)
    const next = setInterval(() => steps.length ? show(steps.shift()) : (clearInterval(next), fetch("/done")), 700)
}, 3000)
</script>"""


def page(packages):
    rows = "".join(f'<div class="card">📦 Tracking: MRV-{i} <b>RECIBIDO</b><br><small>Repuestos electrónicos y cámara, caja '
                   f'número {i}</small></div>' for i in range(packages))
    return PAGE.format(count=packages, rows=rows).encode()


def family(pid):
    """A process and its descendants."""
    children = pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
    return [pid] + [one for child in children for one in family(int(child))]


def proportional(pids):
    """Returns the memory of the processes in bytes, counting shared memory once."""
    total = 0
    for pid in pids:
        try:
            rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
            total += 1024 * int(rollup.split("Pss:")[1].split()[0])
        except (OSError, IndexError):
            pass  # the process has ended
    return total


def processor_time(pids):
    """Returns the processor time of these processes and of those that they have started and that have ended, in seconds."""
    ticks = 0
    for pid in pids:
        with contextlib.suppress(OSError):
            ticks += sum(map(int, pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[11:15]))
    return ticks / os.sysconf("SC_CLK_TCK")


@contextlib.contextmanager
def browsing(machine, content, sign):
    """Starts a browser with a new profile that shows this page; waits until the page requests `sign`."""
    seen = threading.Event()

    class Handler(BaseHTTPRequestHandler):
        def do_GET(self):
            if self.path == sign:
                seen.set()
            body = content if self.path == "/" else b""
            self.send_response(200)
            self.send_header("Content-Type", "text/html; charset=utf-8")
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *_):
            pass

    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    home = machine.home(f"browser{server.server_port}")
    browser = subprocess.Popen(["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run",
                                "--disable-background-networking", f"--user-data-dir={home}/profile", "--window-size=390,844",
                                "--remote-debugging-port=0", f"http://127.0.0.1:{server.server_port}/"],
                               env=machine.environment(home), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        if not seen.wait(60):
            raise RuntimeError("the browser has shown nothing")
        yield browser.pid
    finally:
        browser.terminate()
        browser.wait()
        server.shutdown()


def measure(machine, packages):
    """Returns the milliseconds from the start of a browser with a new profile to the page's first paint, and its memory."""
    start = time.perf_counter()
    with browsing(machine, page(packages), "/shown") as pid:
        milliseconds = 1000 * (time.perf_counter() - start)
        time.sleep(2)
        return milliseconds, proportional(family(pid))


def tour(machine, packages):
    """Returns the processor time, in seconds, of a browser that shows the same screens as bench_app's walk for as long."""
    form = "".join(f"<p>Campo {i}<br><input value='Ana María'></p>" for i in range(4)) + "<button>Enviar</button>"
    screens = "".join(f"<section hidden><h3>Pantalla {i}</h3>{form}</section>" for i in range(7))
    content = page(packages).replace(b"<h3>Hola", f"<section id=login><h3>Marovenda</h3>{form}</section>{screens}"
                                     "<section id=home hidden><h3>Hola".encode())
    content = content.replace(b"<script>", b"</section>" + TOUR + b"<script>")
    with browsing(machine, content, "/done") as pid:
        return processor_time(family(pid))
