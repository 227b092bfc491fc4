"""Only this machine reaches the service, through 127.0.0.1 alone."""

import json
import pathlib
import socket
import subprocess

PATIENCE = 10
TCP_LISTEN = "0A"


def own_addresses():
    """The machine's other addresses, one made for this where that is granted, and one more of the loopback network."""
    subprocess.run(["ip", "address", "add", "192.0.2.1/32", "dev", "lo"], check=False, stderr=subprocess.DEVNULL)
    listed = json.loads(subprocess.run(["ip", "-json", "address"], check=True, capture_output=True).stdout)
    found = {info["local"] for link in listed for info in link["addr_info"] if info.get("scope") != "link"}
    return sorted(found - {"127.0.0.1"} | {"127.0.0.2"})


def reachable(address, port):
    family = socket.AF_INET6 if ":" in address else socket.AF_INET
    with socket.socket(family) as client:
        client.settimeout(PATIENCE)
        try:
            client.connect((address, port))
            return True
        except OSError:
            return False


def listener_for_all(address):
    """Someone who does answer at this address, so that the way there is known to be open."""
    if ":" in address:
        return socket.create_server(("::", 0), family=socket.AF_INET6)
    return socket.create_server(("0.0.0.0", 0))


def listening_places(process):
    """The places at which a process listens, as the kernel tells them: table, address and port in hexadecimal."""
    inodes = set()
    for descriptor in pathlib.Path(f"/proc/{process}/fd").iterdir():
        try:
            inodes.add(str(descriptor.readlink()))
        except OSError:
            pass  # closed meanwhile
    places = []
    for table in ("tcp", "tcp6", "udp", "udp6"):
        for line in pathlib.Path(f"/proc/{process}/net/{table}").read_text().splitlines()[1:]:
            words = line.split()
            if f"socket:[{words[9]}]" in inodes and (words[3] == TCP_LISTEN or table.startswith("udp")):
                places.append((table, words[1]))
    return places


def check(tally, program, _random, _long):
    tally.note("answers at 127.0.0.1", reachable("127.0.0.1", program.port))
    places = listening_places(program.process.pid)
    tally.note("listens at 127.0.0.1 alone", places == [("tcp", f"0100007F:{program.port:04X}")], str(places))
    for address in own_addresses():
        with listener_for_all(address) as other:
            tally.note("another address is open", reachable(address, other.getsockname()[1]), address)
        tally.note("not at another address", not reachable(address, program.port), address)
