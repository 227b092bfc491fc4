"""Measures the alternative to the app: the same home screen as a page in a browser."""

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


def measure(machine, packages):
    """Returns the milliseconds from the start of a browser with a new profile to the page's first paint, and its memory."""
    shown = threading.Event()

    class Handler(BaseHTTPRequestHandler):
        def do_GET(self):
            if self.path == "/shown":
                shown.set()
            body = page(packages) if self.path == "/" else b""
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
    start = time.perf_counter()
    browser = subprocess.Popen(["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run",
                                "--disable-background-networking", f"--user-data-dir={home}/profile", "--window-size=390,844",
                                "--remote-debugging-port=0", f"http://127.0.0.1:{server.server_port}/"],
                               env=machine.environment(home), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        if not shown.wait(60):
            raise RuntimeError("the browser has shown nothing")
        milliseconds = 1000 * (time.perf_counter() - start)
        time.sleep(2)
        return milliseconds, proportional(family(browser.pid))
    finally:
        browser.terminate()
        browser.wait()
        server.shutdown()
