"""How the scripted server encrypts."""

import ssl


class Secrecy:
    """From a dictionary: "certificate", and where wanted "oldest", "newest" (TLS versions), "ciphers"."""

    def __init__(self, folder, wish):
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        # A server takes whatever it is given; to refuse is the client's part.
        self.context.set_ciphers(wish.get("ciphers", "DEFAULT:@SECLEVEL=0"))
        for end, name in (("minimum_version", "oldest"), ("maximum_version", "newest")):
            if name in wish:
                setattr(self.context, end, ssl.TLSVersion[wish[name]])
        if "certificate" in wish:
            self.context.load_cert_chain(f"{folder}/{wish['certificate']}.pem")

    def shake_hands(self, connection):
        """The encrypted connection; raises when the client does not agree."""
        return self.context.wrap_socket(connection, server_side=True)

    def first_flight(self, receive):
        """What the server says first in a handshake with the client whose bytes `receive` gives."""
        incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
        conversation = self.context.wrap_bio(incoming, outgoing, server_side=True)
        while not outgoing.pending:
            incoming.write(receive())
            try:
                conversation.do_handshake()
            except ssl.SSLWantReadError:
                pass
        return outgoing.read()
