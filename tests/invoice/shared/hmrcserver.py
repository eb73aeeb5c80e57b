#!/usr/bin/python3
"""A stand-in for HMRC's Making Tax Digital for VAT interface, for the VAT tests: HTTPS on
127.0.0.1 and a free port, answering as HMRC documents (status codes, JSON bodies, headers).

Prints "PORT <n>" on stdout once it listens, then serves until it is killed. Every request is
appended to <outdir>/requests.jsonl (method, path, query, headers, body). Tokens:
the access token "acc-0" and the refresh token "ref-0" are valid at start; each successful token
request issues "acc-<n>"/"ref-<n>" and invalidates the previous pair (refresh tokens are single use).

  --cert C --key K       the server's certificate and key (PEM)
  --expired              "acc-0" has expired: calls with it get 401 INVALID_CREDENTIALS
  --always-invalid       every API call gets 401 INVALID_CREDENTIALS
  --token-error          the token endpoint answers 400 invalid_grant
  --token-no-refresh     the token endpoint answers 200 without "refresh_token"
  --obligations-body T   obligations answer 200 with the raw text T (malformed or odd replies)
  --hang                 every API call gets its headers and half a body, then nothing
"""

import argparse
import datetime
import json
import os
import ssl
import sys
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

CLIENT_ID = "Qz4kLmP8vRt2_WnY6hJd3sXa9BcE"
CLIENT_SECRET = "d3b07384-5e1f-4c2a-9a7b-0f6e8d2c4b1a"
REDIRECT_URI = "urn:ietf:wg:oauth:2.0:oob"
FRAUD_HEADERS = [
    "Gov-Client-Connection-Method", "Gov-Client-Device-ID", "Gov-Client-Timezone",
    "Gov-Client-User-Agent", "Gov-Vendor-Product-Name", "Gov-Vendor-Version",
]

OBLIGATIONS = [
    {"start": "2000-01-01", "end": "2000-03-31", "due": "2000-05-07", "status": "F",
     "periodKey": "00A1", "received": "2000-05-06"},
    {"start": "2000-04-01", "end": "2000-06-30", "due": "2000-08-07", "status": "O", "periodKey": "00A2"},
    {"start": "2000-07-01", "end": "2000-09-30", "due": "2000-11-07", "status": "O", "periodKey": "#001"},
    {"start": "2017-01-01", "end": "2017-03-31", "due": "2017-05-07", "status": "O", "periodKey": "17A1"},
]
RETURN_FIELDS = ["vatDueSales", "vatDueAcquisitions", "totalVatDue", "vatReclaimedCurrPeriod", "netVatDue",
                 "totalValueSalesExVAT", "totalValuePurchasesExVAT", "totalValueGoodsSuppliedExVAT",
                 "totalAcquisitionsExVAT"]


class State:
    def __init__(self, args):
        self.args = args
        self.lock = threading.Lock()
        self.serial = 0
        self.access = "acc-0"
        self.refresh = "ref-0"
        self.returns = {}
        self.log = os.path.join(args.outdir, "requests.jsonl")


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def answer(self, status, body, headers=None):
        data = body if isinstance(body, bytes) else json.dumps(body).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(data)))
        self.send_header("X-CorrelationId", "5f6a2c1e-0b7d-4e8f-9a1b-2c3d4e5f6a7b")
        for name, value in (headers or {}).items():
            self.send_header(name, value)
        self.send_header("Connection", "close")
        self.end_headers()
        self.wfile.write(data)
        self.close_connection = True

    def error(self, status, code, message, errors=None):
        body = {"code": code, "message": message}
        if errors:
            body["errors"] = errors
        self.answer(status, body)

    def record(self, body):
        url = urllib.parse.urlsplit(self.path)
        entry = {"method": self.command, "path": url.path, "query": url.query,
                 "headers": {k: v for k, v in self.headers.items()}, "body": body.decode("latin-1")}
        with STATE.lock, open(STATE.log, "a", encoding="utf-8") as log:
            log.write(json.dumps(entry) + "\n")

    def read_body(self):
        length = int(self.headers.get("Content-Length", "0"))
        return self.rfile.read(length) if length else b""

    def do_GET(self):
        self.record(b"")
        self.api(b"")

    def do_POST(self):
        body = self.read_body()
        self.record(body)
        if urllib.parse.urlsplit(self.path).path == "/oauth/token":
            self.token(body)
        else:
            self.api(body)

    def token(self, body):
        args = STATE.args
        if self.headers.get("Content-Type", "") != "application/x-www-form-urlencoded":
            return self.answer(400, {"error": "invalid_request", "error_description": "content type"})
        form = dict(urllib.parse.parse_qsl(body.decode("latin-1"), keep_blank_values=True))
        if form.get("client_id") != CLIENT_ID or form.get("client_secret") != CLIENT_SECRET:
            return self.answer(401, {"error": "invalid_client", "error_description": "invalid client id or secret"})
        grant = form.get("grant_type")
        with STATE.lock:
            if args.token_error:
                return self.answer(400, {"error": "invalid_grant", "error_description": "refresh token is invalid"})
            if grant == "authorization_code":
                if form.get("redirect_uri") != REDIRECT_URI or not form.get("code"):
                    return self.answer(400, {"error": "invalid_request", "error_description": "code or redirect_uri"})
            elif grant == "refresh_token":
                if form.get("refresh_token") != STATE.refresh:
                    return self.answer(400, {"error": "invalid_grant", "error_description": "refresh token is invalid"})
            else:
                return self.answer(400, {"error": "invalid_request", "error_description": "unsupported grant_type"})
            STATE.serial += 1
            STATE.access = "acc-%d" % STATE.serial
            STATE.refresh = "ref-%d" % STATE.serial
            reply = {"access_token": STATE.access, "token_type": "bearer", "expires_in": 14400,
                     "scope": "read:vat write:vat"}
            if not args.token_no_refresh:
                reply["refresh_token"] = STATE.refresh
        self.answer(200, reply)

    def api(self, body):
        args = STATE.args
        if self.headers.get("Accept") != "application/vnd.hmrc.1.0+json":
            return self.error(406, "ACCEPT_HEADER_INVALID", "The accept header is missing or invalid")
        auth = self.headers.get("Authorization", "")
        if not auth.startswith("Bearer ") or len(auth) == 7:
            return self.error(401, "MISSING_CREDENTIALS", "Authentication information is not provided")
        token = auth[7:]
        with STATE.lock:
            valid = token == STATE.access and not args.always_invalid and not (args.expired and token == "acc-0")
        if not valid:
            return self.error(401, "INVALID_CREDENTIALS", "Invalid authentication information provided")
        if args.hang:
            self.send_response(200)
            self.send_header("Content-Type", "application/json")
            self.send_header("Content-Length", "1000")
            self.end_headers()
            self.wfile.write(b'{"obligations":[')
            self.wfile.flush()
            time.sleep(3600)
            return
        parts = urllib.parse.urlsplit(self.path)
        segments = [urllib.parse.unquote(s) for s in parts.path.split("/")]
        if len(segments) < 5 or segments[1:3] != ["organisations", "vat"]:
            return self.error(404, "MATCHING_RESOURCE_NOT_FOUND", "A resource with the name in the request can not be found in the API")
        vrn = segments[3]
        if not (len(vrn) == 9 and vrn.isdigit()):
            return self.error(400, "VRN_INVALID", "The provided VRN is invalid")
        if self.command == "GET" and segments[4:] == ["obligations"]:
            return self.obligations(parts.query)
        if self.command == "POST" and segments[4:] == ["returns"]:
            return self.submit(body)
        if self.command == "GET" and len(segments) == 6 and segments[4] == "returns":
            return self.view(segments[5])
        return self.error(404, "MATCHING_RESOURCE_NOT_FOUND", "A resource with the name in the request can not be found in the API")

    def obligations(self, query):
        if STATE.args.obligations_body is not None:
            return self.answer(200, STATE.args.obligations_body.encode())
        params = dict(urllib.parse.parse_qsl(query))
        try:
            start = datetime.date.fromisoformat(params["from"])
            end = datetime.date.fromisoformat(params["to"])
        except KeyError:
            return self.error(400, "MISSING_DATE_RANGE", "Missing date range")
        except ValueError:
            return self.error(400, "INVALID_DATE_FROM", "Invalid date from")
        if end < start or (end - start).days > 366:
            return self.error(400, "INVALID_DATE_RANGE", "Invalid date range, must be 366 days or less")
        found = [dict(o) for o in OBLIGATIONS
                 if datetime.date.fromisoformat(o["start"]) <= end and datetime.date.fromisoformat(o["end"]) >= start]
        with STATE.lock:
            for o in found:
                if o["periodKey"] in STATE.returns:
                    o["status"] = "F"
                    o["received"] = "2000-12-01"
        if not found:
            return self.error(404, "NOT_FOUND", "The requested resource could not be found")
        self.answer(200, {"obligations": found})

    def submit(self, body):
        if self.headers.get("Content-Type") != "application/json":
            return self.error(400, "INVALID_BODY_TYPE", "Expecting text/json or application/json body")
        try:
            data = json.loads(body)
        except ValueError:
            return self.error(400, "INVALID_JSON", "Invalid JSON")
        missing = [f for f in ["periodKey"] + RETURN_FIELDS + ["finalised"] if f not in data]
        if missing:
            return self.error(400, "INVALID_REQUEST", "Invalid request",
                              [{"code": "INVALID_NUMERIC_VALUE", "message": "please provide a numeric field",
                                "path": "/" + f} for f in missing])
        if not isinstance(data["periodKey"], str) or len(data["periodKey"]) != 4:
            return self.error(400, "PERIOD_KEY_INVALID", "Invalid period key")
        if data["finalised"] is not True:
            return self.error(403, "NOT_FINALISED", "User has not declared VAT return as final")
        with STATE.lock:
            if data["periodKey"] in STATE.returns:
                return self.error(403, "BUSINESS_ERROR", "Business validation error",
                                  [{"code": "DUPLICATE_SUBMISSION",
                                    "message": "The VAT return was already submitted for the given period"}])
            STATE.returns[data["periodKey"]] = {k: data[k] for k in ["periodKey"] + RETURN_FIELDS}
        self.answer(201, {"processingDate": "2000-12-01T10:00:00.000Z", "formBundleNumber": "123456789012",
                          "paymentIndicator": "BANK"},
                    {"Receipt-ID": "2b3c4d5e-6f70-4a81-92a3-b4c5d6e7f809", "Receipt-Timestamp": "2000-12-01T10:00:00Z",
                     "Receipt-Signature": "c2lnbmF0dXJl"})

    def view(self, key):
        with STATE.lock:
            stored = STATE.returns.get(key)
        if stored is None:
            return self.error(404, "NOT_FOUND", "The requested resource could not be found")
        self.answer(200, stored)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--cert", required=True)
    parser.add_argument("--key", required=True)
    parser.add_argument("--outdir", required=True)
    parser.add_argument("--expired", action="store_true")
    parser.add_argument("--always-invalid", action="store_true")
    parser.add_argument("--token-error", action="store_true")
    parser.add_argument("--token-no-refresh", action="store_true")
    parser.add_argument("--obligations-body")
    parser.add_argument("--hang", action="store_true")
    args = parser.parse_args()
    global STATE
    STATE = State(args)
    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(args.cert, args.key)
    server.socket = context.wrap_socket(server.socket, server_side=True)
    print("PORT %d" % server.server_address[1], flush=True)
    server.serve_forever()


if __name__ == "__main__":
    main()
