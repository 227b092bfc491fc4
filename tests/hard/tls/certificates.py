"""Makes the certificates of the check of encryption with the openssl command: a folder of NAME.pem, each a key with the
certificates that a server shows, and root.crt, which the client is to trust."""

import subprocess

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

    def make(self, name, signer=None, above=(), part="server", valid=NOW, names=HERE, digest="sha256",
             key=("ec", "ec_paramgen_curve:P-256")):
        """A key and its certificate, signed by another's key or by its own. The name in it is `name`."""
        self.configuration.write_text(CONFIGURATION.format(folder=self.folder, names=names))
        self.openssl("req", "-new", "-newkey", key[0], "-pkeyopt", key[1], "-nodes", "-config",
                     self.configuration, "-subj", f"/CN={name}", "-keyout", f"{name}.key", "-out", f"{name}.csr")
        by = ["-selfsign", "-keyfile", f"{name}.key"] if signer is None else ["-cert", f"{signer}.crt", "-keyfile",
                                                                              f"{signer}.key"]
        self.openssl("ca", "-batch", "-notext", "-config", self.configuration, *by, "-startdate", valid[0], "-enddate",
                     valid[1], "-extensions", part, "-md", digest, "-in", f"{name}.csr", "-out", f"{name}.crt")
        shown = [f"{name}.key", *(f"{one}.crt" for one in (name, *above))]
        (self.folder / f"{name}.pem").write_text("".join((self.folder / one).read_text() for one in shown))


# What a client must refuse: how each is made, and what the server shows beside it.
BAD = {
    "expired": {"signer": "root", "valid": PAST},
    "not-yet-valid": {"signer": "root", "valid": FUTURE},
    "for-another-host": {"signer": "root", "names": "DNS:elsewhere.example,IP:127.0.0.2"},
    "for-a-host-whose-name-holds-this-one": {
        "signer": "root", "names": "DNS:localhost.elsewhere.example,DNS:www.localhost"},
    "for-any-host": {"signer": "root", "names": "DNS:*,DNS:*.localhost"},
    "for-clients": {"signer": "root", "part": "client"},
    "signed-with-SHA-1": {"signer": "root", "digest": "sha1"},
    "self-signed": {},
    "of-an-untrusted-root": {"signer": "stranger"},
    "by-way-of-one-that-is-not-shown": {"signer": "middle"},
    "by-way-of-one-that-has-expired": {"signer": "stale-middle", "above": ["stale-middle"]},
    "by-way-of-one-that-may-not-sign": {"signer": "good", "above": ["good"]},
}


def make_all(folder):
    maker = Maker(folder.resolve())
    maker.make("root", part="root")
    maker.make("stranger", part="root")
    maker.make("middle", "root", part="root")
    maker.make("stale-middle", "root", part="root", valid=PAST)
    maker.make("good", "root")
    maker.make("by-middle", "middle", ["middle"])
    for name, options in BAD.items():
        maker.make(name, **options)
