"""Makes the certificates of the check of encryption with the openssl command: a folder of NAME.pem, each a key with the
certificates that a server shows, and root.crt, which the client is to trust.

usage: certificates.py FOLDER
"""

import os
import pathlib
import subprocess
import sys

CONFIGURATION = """
[ca]
default_ca = it
[it]
database = {folder}/index
rand_serial = yes
unique_subject = no
new_certs_dir = {folder}
default_md = sha256
policy = any
copy_extensions = none
[any]
commonName = optional
[req]
distinguished_name = name
[name]
[root]
basicConstraints = critical,CA:TRUE
keyUsage = critical,keyCertSign
[server]
basicConstraints = critical,CA:FALSE
extendedKeyUsage = serverAuth
subjectAltName = {names}
[client]
basicConstraints = critical,CA:FALSE
extendedKeyUsage = clientAuth
subjectAltName = {names}
"""
HERE = "DNS:localhost,IP:127.0.0.1"
PAST, FUTURE = ("20100101000000Z", "20110101000000Z"), ("20900101000000Z", "20910101000000Z")
NOW = ("20200101000000Z", "20800101000000Z")


class Maker:
    def __init__(self, folder):
        self.folder = folder
        self.configuration = folder / "configuration"
        (folder / "index").touch()

    def openssl(self, *arguments):
        subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True, cwd=self.folder)

    def make(self, name, signer=None, part="server", valid=NOW, names=HERE, digest="sha256"):
        """A key and its certificate, signed by another's key or by its own. The name in it is `name`."""
        self.configuration.write_text(CONFIGURATION.format(folder=self.folder, names=names))
        self.openssl("req", "-new", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-config",
                     self.configuration, "-subj", f"/CN={name}", "-keyout", f"{name}.key", "-out", f"{name}.csr")
        by = ["-selfsign", "-keyfile", f"{name}.key"] if signer is None else ["-cert", f"{signer}.crt", "-keyfile",
                                                                              f"{signer}.key"]
        self.openssl("ca", "-batch", "-notext", "-config", self.configuration, *by, "-startdate", valid[0], "-enddate",
                     valid[1], "-extensions", part, "-md", digest, "-in", f"{name}.csr", "-out", f"{name}.crt")

    def show(self, name, *above):
        """What a server with this certificate shows."""
        parts = [f"{name}.key", *(f"{one}.crt" for one in (name, *above))]
        (self.folder / f"{name}.pem").write_text("".join((self.folder / one).read_text() for one in parts))


def main():
    maker = Maker(pathlib.Path(sys.argv[1]).resolve())
    maker.make("root", part="root")
    maker.make("stranger", part="root")
    maker.make("middle", "root", "root")
    maker.make("stale-middle", "root", "root", valid=PAST)
    for name, options in {
        "good": {"signer": "root"},
        "expired": {"signer": "root", "valid": PAST},
        "not-yet-valid": {"signer": "root", "valid": FUTURE},
        "wrong-host": {"signer": "root", "names": "DNS:elsewhere.example,IP:127.0.0.2"},
        "longer-host": {"signer": "root", "names": "DNS:localhost.elsewhere.example,DNS:www.localhost"},
        "wildcard-host": {"signer": "root", "names": "DNS:*,DNS:*.localhost"},
        "for-clients": {"signer": "root", "part": "client"},
        "with-sha1": {"signer": "root", "digest": "sha1"},
        "self-signed": {},
        "untrusted-root": {"signer": "stranger"},
    }.items():
        maker.make(name, **options)
        maker.show(name)
    for name, above in (("by-middle", "middle"), ("by-stale-middle", "stale-middle"), ("by-no-authority", "good")):
        maker.make(name, above)
        maker.show(name, above)
    maker.make("lacks-its-middle", "middle")
    maker.show("lacks-its-middle")


if __name__ == "__main__":
    os.umask(0o077)
    main()
