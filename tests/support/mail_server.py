"""A mail server on the loopback for the tests: TLS and a login are required.

mail_server.py FOLDER: FOLDER holds cert.pem and key.pem; "port" is written there once it listens, and each mail as
"N.json" (envelope, headers, parts) with its attachments as "N.PART". Ends when its standard input does.
"""

import email
import email.policy
import json
import pathlib
import socket
import ssl
import sys

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult

folder = pathlib.Path(sys.argv[1])


class Keeper:
    mails = 0

    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.startswith("refused"):
            return "550 no such mailbox"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        Keeper.mails += 1
        mail = email.message_from_bytes(envelope.content, policy=email.policy.default)
        parts = []
        for number, part in enumerate(part for part in mail.walk() if not part.is_multipart()):
            (folder / f"{Keeper.mails}.{number}").write_bytes(part.get_payload(decode=True))
            parts.append({"type": part.get_content_type(), "name": part.get_filename()})
        kept = {"from": envelope.mail_from, "to": envelope.rcpt_tos, "subject": mail["Subject"],
                "encrypted": session.ssl is not None, "parts": parts}
        (folder / f"{Keeper.mails}.json").write_text(json.dumps(kept))
        return "250 taken"


def authenticate(server, session, envelope, mechanism, data):
    # handled=False leaves the answer, 235 or 535, to the server.
    return AuthResult(success=data.login == b"tally" and data.password == b"s3cret!", handled=False)


context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(folder / "cert.pem", folder / "key.pem")
with socket.socket() as probe:
    probe.bind(("127.0.0.1", 0))
    port = probe.getsockname()[1]
controller = Controller(Keeper(), hostname="127.0.0.1", port=port, tls_context=context, require_starttls=True,
                        authenticator=authenticate, auth_required=True, data_size_limit=64 << 20)
controller.start()
(folder / "port.new").write_text(str(port))
(folder / "port.new").rename(folder / "port")
sys.stdin.read()
controller.stop()
