#!/usr/bin/python3
"""A real SMTP server for the mail tests, on 127.0.0.1 and a free port (aiosmtpd).

Prints "PORT <n>" on stdout once it listens, then serves until it is killed. Every message it
takes is written to --outdir as msg-<n>.eml (the content as received, dot-stuffing removed) and
msg-<n>.json (envelope, session facts, headers, and each MIME leaf part decoded by Python's own
mail parser into msg-<n>-part-<k>.bin). Every command it sees goes to events.log, one a line.

  --tls-cert C --tls-key K    offer STARTTLS with this certificate
  --require-starttls          refuse MAIL and AUTH before STARTTLS
  --auth USER:PASSWORD        require AUTH (LOGIN only) with these credentials
  --auth-clear                accept AUTH without TLS
  --reply CMD=CODE,CODE...    answer the next uses of CMD with these codes ("-" = normally);
                              CMD is HELO, EHLO, AUTH, MAIL, RCPT, DATACMD (the DATA command
                              itself), DATA (the answer after the message) or QUIT
  --refuse-rcpt ADDRESS       answer RCPT TO for this address with 550
"""

import argparse
import asyncio
import email
import email.policy
import json
import os
import ssl
import sys

# MISSING: aiosmtpd's answer of a hook that leaves the command to the server.
from aiosmtpd.smtp import MISSING, SMTP, AuthResult, LoginPassword

# Reply lines of the refusals; the text after the first ':' is what the client quotes.
REPLY_TEXT = {
    "HELO": "5.5.2 helo: refus HELO",
    "EHLO": "5.5.2 ehlo: refus EHLO",
    "AUTH": "5.7.0 auth: refus AUTH",
    "MAIL": "5.1.8 sender: refus MAIL",
    "RCPT": "5.1.1 rcpt: refus RCPT",
    "DATACMD": "4.3.0 data: refus DATA",
    "DATA": "5.6.0 message: refus message",
    "QUIT": "4.0.0 quit: refus QUIT",
}


class Journal:
    def __init__(self, outdir):
        self.outdir = outdir
        self.count = 0

    def event(self, text):
        with open(os.path.join(self.outdir, "events.log"), "a", encoding="utf-8") as log:
            log.write(text + "\n")

    def save(self, session, envelope):
        self.count += 1
        base = os.path.join(self.outdir, "msg-%d" % self.count)
        content = envelope.original_content
        with open(base + ".eml", "wb") as out:
            out.write(content)
        parsed = email.message_from_bytes(content, policy=email.policy.default)
        parts = []
        for k, part in enumerate(p for p in parsed.walk() if not p.is_multipart()):
            path = "%s-part-%d.bin" % (base, k)
            with open(path, "wb") as out:
                out.write(part.get_payload(decode=True) or b"")
            parts.append({
                "contentType": part.get_content_type(),
                "charset": part.get_content_charset(),
                "filename": part.get_filename(),
                "encoding": part.get("Content-Transfer-Encoding"),
                "path": path,
            })
        login = session.auth_data.login.decode() if isinstance(session.auth_data, LoginPassword) else None
        record = {
            "mailFrom": envelope.mail_from,
            "rcptTos": envelope.rcpt_tos,
            "heloName": session.host_name,
            "extended": session.extended_smtp,
            "tls": session.ssl is not None,
            "login": login,
            "headers": [[name, value] for name, value in parsed.raw_items()],
            "subject": str(parsed["subject"]) if parsed["subject"] is not None else None,
            "multipart": parsed.get_content_type(),
            "boundary": parsed.get_boundary(),
            "parts": parts,
        }
        # Written beside, then renamed: a reader never sees half a file.
        with open(base + ".json.tmp", "w", encoding="utf-8") as out:
            json.dump(record, out)
        os.rename(base + ".json.tmp", base + ".json")


class Handler:
    def __init__(self, journal, replies, refused):
        self.journal = journal
        self.replies = replies
        self.refused = refused

    def scripted(self, command):
        """The refusal line for this use of command, or None to answer normally."""
        queue = self.replies.get(command)
        if not queue:
            return None
        code = queue.pop(0)
        return None if code == "-" else "%s %s" % (code, REPLY_TEXT[command])

    async def handle_HELO(self, server, session, envelope, hostname):
        self.journal.event("HELO " + hostname)
        status = self.scripted("HELO")
        if status is None:
            session.host_name = hostname
            return "250 %s" % server.hostname
        return status

    async def handle_EHLO(self, server, session, envelope, hostname, responses):
        self.journal.event("EHLO " + hostname)
        status = self.scripted("EHLO")
        if status is None:
            session.host_name = hostname
            return responses
        return [status]

    async def handle_AUTH(self, server, session, envelope, args):
        self.journal.event("AUTH " + " ".join(args))
        status = self.scripted("AUTH")
        return status if status is not None else MISSING

    async def handle_MAIL(self, server, session, envelope, address, options):
        self.journal.event("MAIL " + address)
        status = self.scripted("MAIL")
        if status is not None:
            return status
        envelope.mail_from = address
        return "250 OK"

    async def handle_RCPT(self, server, session, envelope, address, options):
        self.journal.event("RCPT " + address)
        if address in self.refused:
            return "550 5.1.1 <%s>: Recipient address rejected: inconnu" % address
        status = self.scripted("RCPT")
        if status is not None:
            return status
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.journal.event("DATA %d" % len(envelope.original_content))
        status = self.scripted("DATA")
        if status is not None:
            return status
        self.journal.save(session, envelope)
        return "250 Message accepted for delivery"

    async def handle_QUIT(self, server, session, envelope):
        self.journal.event("QUIT")
        status = self.scripted("QUIT")
        return status if status is not None else "221 Bye"


class TestSMTP(SMTP):
    """Adds the connection journal and the refusal of the DATA command itself."""

    def connection_made(self, transport):
        if self._original_transport is None:
            self.event_handler.journal.event("CONNECT")
        else:
            self.event_handler.journal.event("STARTTLS")
        super().connection_made(transport)

    async def smtp_DATA(self, arg):
        status = self.event_handler.scripted("DATACMD") if self.envelope.rcpt_tos else None
        if status is not None:
            await self.push(status)
            return
        await super().smtp_DATA(arg)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--outdir", required=True)
    parser.add_argument("--tls-cert")
    parser.add_argument("--tls-key")
    parser.add_argument("--require-starttls", action="store_true")
    parser.add_argument("--auth")
    parser.add_argument("--auth-clear", action="store_true")
    parser.add_argument("--reply", action="append", default=[])
    parser.add_argument("--refuse-rcpt", action="append", default=[])
    options = parser.parse_args()

    replies = {}
    for rule in options.reply:
        command, _, codes = rule.partition("=")
        replies[command] = codes.split(",")
    journal = Journal(options.outdir)
    handler = Handler(journal, replies, set(options.refuse_rcpt))

    settings = {"hostname": "mail.test", "auth_exclude_mechanism": ["PLAIN"]}
    if options.tls_cert:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(options.tls_cert, options.tls_key)
        settings["tls_context"] = context
        settings["require_starttls"] = options.require_starttls
    if options.auth:
        user, _, password = options.auth.partition(":")

        def authenticator(server, session, envelope, mechanism, auth_data):
            ok = auth_data.login == user.encode() and auth_data.password == password.encode()
            # handled=False makes the server answer 535 itself on a refusal.
            return AuthResult(success=ok, handled=False, auth_data=auth_data)

        settings["authenticator"] = authenticator
        settings["auth_required"] = True
        settings["auth_require_tls"] = not options.auth_clear

    loop = asyncio.new_event_loop()
    server = loop.run_until_complete(
        loop.create_server(lambda: TestSMTP(handler, loop=loop, **settings), host="127.0.0.1", port=0))
    print("PORT %d" % server.sockets[0].getsockname()[1], flush=True)
    loop.run_forever()


if __name__ == "__main__":
    sys.exit(main())
