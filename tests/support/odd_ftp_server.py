#!/usr/bin/python3
"""A loopback FTP server for tests: sound by default, odd on request. Needs pyftpdlib, and pyOpenSSL for TLS.

Prints two lines once it listens: the port, and "/", the login folder, which is ROOT. Ends when its stdin closes or at
SIGTERM. Login is web / s3cret unless options say otherwise. Any user may run it.

STAGE is where something odd happens: a command (USER PASS PWD CWD EPSV PASV TYPE LIST MLSD MDTM SIZE RETR STOR RNFR
RNTO MKD QUIT), "greeting" (in place of the first reply), "data" (in a transfer, after 64 KiB) or "done" (after
the data of an upload, in place of the reply to it), "renamed" (after RNTO was done, in place of the reply to it).

With --break a test says while the server runs what is to go wrong next. Its FILE holds a number and a way to break:
"close", "reset", "stall" or the text of a reply. Counted from when FILE appeared, the step of that number breaks so,
and FILE is removed. A step is the greeting, a command, a block of a transfer or the end of an upload's data. A reply
in place of data ends the transfer, one with 421 the connection.
"""
import argparse
import fnmatch
import io
import logging
import os
import socket
import stat
import struct
import sys
import threading
import time
import unicodedata

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.filesystems import AbstractedFS
from pyftpdlib.handlers import DTPHandler, FTPHandler, ThrottledDTPHandler
from pyftpdlib.servers import FTPServer

CHUNK = 16384
ODD_AFTER = 4 * CHUNK  # bytes of a transfer


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("root", help="the folder to serve; made when missing")
    add("--port", type=int, default=0, help="listen here instead of on a free port")
    add("--passive", type=int, nargs=2, metavar=("FIRST", "LAST"), help="ports of data connections")
    add("--tls", choices=["explicit", "implicit"])
    add("--cert", metavar="FILE", help="PEM file with key and certificate")
    add("--user", default="web")
    add("--password", default="s3cret")
    add("--start", metavar="FOLDER", default="/", help="the folder in which a login starts")
    add("--no", action="append", default=[], metavar="COMMAND", help="answer 500 to this command")
    add("--reply", action="append", default=[], metavar="COMMAND=TEXT", help="answer with TEXT, doing nothing")
    add("--no-replace", action="store_true", help="RNTO refuses an existing target")
    add("--list", choices=["unix", "iis", "odd"], default="unix", help="the format of LIST")
    add("--hide", action="append", default=[], metavar="GLOB", help="names that LIST leaves out and MLSD shows")
    add("--mlsd-add", action="append", default=[], metavar="LINE", help=r"a further line of every MLSD; takes \xHH")
    add("--listing", metavar="FILE", help="the bytes of FILE are what every folder lists, and every folder is there")
    add("--endless", action="store_true", help="the bytes of --listing or --every-file come again and again")
    add("--cut", action="store_true", help="every listing loses its last three bytes; counts for --times")
    add("--fold", action="store_true", help="names are found whatever their case and normalization form")
    add("--every-file", metavar="FILE", help="every download brings the bytes of FILE, whatever its name")
    add("--echo", action="store_true", help="every reply repeats the user and the password that were given")
    add("--rate", type=int, metavar="BYTES", help="bytes a second, both ways")
    add("--delay", type=float, default=0, metavar="SECONDS", help="wait before the reply to every command")
    add("--hang", metavar="STAGE", help="go silent there, keeping the connection")
    add("--drop", metavar="STAGE", help="close the whole connection there")
    add("--hold", metavar="FILE", help='every transfer, and with it the server, waits there ("data") while FILE exists')
    add("--only", metavar="GLOB", help="--reply, --hang and --drop at a command only when the last component of its "
        "argument matches")
    add("--lie", choices=["truncate", "alter", "vanish"], help='success is reported, but: "truncate" an upload loses '
        'its last byte; "alter" a renamed file gains one; "vanish" a renamed file and its target are gone')
    add("--times", type=int, metavar="N", help="only N occasions are odd; --reply, --hang, --drop, --cut and --lie "
        "count together")
    add("--after", type=int, default=0, metavar="N", help="the first N occasions are not odd")
    add("--break", dest="breaking", metavar="FILE", help="where it is said what breaks next: see above")
    add("--log", metavar="FILE", help="write each command with its argument, one a line, as it arrives")
    options = parser.parse_args()
    options.root = os.path.realpath(options.root)
    if options.tls and not options.cert:
        parser.error("--tls needs --cert")
    return options


options = parse_arguments()
silent = set()  # the control connections that went silent


class Occasions:
    """Counts the occasions for something odd and says which of them are."""

    def __init__(self):
        self.spared = options.after
        self.left = options.times

    def take(self):
        if self.spared > 0:
            self.spared -= 1
            return False
        if self.left is None:
            return True
        self.left -= 1
        return self.left >= 0


occasions = Occasions()


def is_odd(option, stage):
    return option == stage and occasions.take()


class Breaking:
    """Counts the steps for --break."""

    steps = 0

    def next_step(self):
        """The way in which this step breaks, or None."""
        try:
            with open(options.breaking, encoding="utf8") as file:
                number, _, way = file.read().strip().partition(" ")
        except (TypeError, FileNotFoundError):  # TypeError: no such option
            self.steps = 0
            return None
        self.steps += 1
        if self.steps < int(number):
            return None
        self.steps = 0
        os.unlink(options.breaking)
        return way


breaking = Breaking()


def folded(name):
    return unicodedata.normalize("NFC", unicodedata.normalize("NFC", name).casefold())


class Files(AbstractedFS):
    def ftp2fs(self, ftppath):
        path = super().ftp2fs(ftppath)
        if not options.fold:
            return path
        found = options.root
        for name in os.path.relpath(path, found).split("/"):
            names = os.listdir(found) if os.path.isdir(found) else []
            alike = [each for each in names if folded(each) == folded(name)]
            found = os.path.join(found, name if name in names or not alike else alike[0])
        return os.path.normpath(found)

    def format_list(self, basedir, listing, ignore_err=True):
        names = [name for name in listing if not any(fnmatch.fnmatchcase(name, glob) for glob in options.hide)]
        if options.list == "unix":
            yield from super().format_list(basedir, names, ignore_err)
            return
        line = self.iis_line if options.list == "iis" else self.odd_line
        for name in names:
            attributes = self.lstat(os.path.join(basedir, name))
            yield (line(name, attributes, stat.S_ISDIR(attributes.st_mode)) + "\r\n").encode("utf8", "surrogateescape")

    @staticmethod
    def iis_line(name, attributes, is_folder):
        modified = time.strftime("%m-%d-%y  %I:%M%p", time.gmtime(attributes.st_mtime))
        return f"{modified} " + ("      <DIR>          " if is_folder else f"{attributes.st_size:20} ") + name

    @staticmethod
    def odd_line(name, attributes, is_folder):
        return f"{'folder' if is_folder else 'file'} | {attributes.st_size} | {name}"

    def format_mlsx(self, *arguments, **named):
        yield from super().format_mlsx(*arguments, **named)
        for line in options.mlsd_add:
            yield line.encode("utf8").decode("unicode_escape").encode("latin-1") + b"\r\n"

    def rename(self, source, target):
        if options.no_replace and os.path.lexists(target):
            raise FileExistsError(17, "File exists")
        super().rename(source, target)
        if is_odd(options.lie, "alter"):
            attributes = os.stat(target)
            with open(target, "ab") as file:
                file.write(b"!")
            os.utime(target, ns=(attributes.st_atime_ns, attributes.st_mtime_ns))
        elif is_odd(options.lie, "vanish"):
            os.unlink(target)


class Given:
    """What a file of --listing or --every-file says, piece by piece."""

    def __init__(self, path):
        with open(path, "rb") as file:
            text = file.read()
        self.text = io.BytesIO(text * (CHUNK // max(len(text), 1) + 1) if options.endless else text)

    def more(self):
        piece = self.text.read(CHUNK)
        if not piece and options.endless:
            self.text.seek(0)
            piece = self.text.read(CHUNK)
        return piece


class OddControl:
    """The control connection."""

    def ftp_MLSD(self, path):
        if options.listing:
            self.push_dtp_data(Given(options.listing), isproducer=True, cmd="MLSD")
        else:
            super().ftp_MLSD(path)

    def ftp_LIST(self, path):
        if options.listing:
            self.push_dtp_data(Given(options.listing), isproducer=True, cmd="LIST")
        else:
            super().ftp_LIST(path)

    def ftp_CWD(self, path):
        if options.listing:
            self.respond("250 Here we are.")
        else:
            super().ftp_CWD(path)

    def push_dtp_data(self, data, isproducer=False, file=None, cmd=None):
        if options.cut and cmd in ("MLSD", "LIST") and occasions.take():
            text = b"".join(iter(data.more, b"")) if isproducer else data
            data, isproducer = text[:-3], False
        super().push_dtp_data(data, isproducer, file, cmd)

    def on_file_received(self, file):
        if is_odd(options.lie, "truncate"):
            os.truncate(file, os.path.getsize(file) - 1)

    def ftp_RNTO(self, path):
        self.is_renaming = True
        super().ftp_RNTO(path)
        self.is_renaming = False

    is_renaming = False

    def ftp_RETR(self, file):
        if options.endless and options.every_file:
            self.push_dtp_data(Given(options.every_file), isproducer=True, cmd="RETR")
            return None
        return super().ftp_RETR(options.every_file or file)

    given = ""  # what --echo repeats

    def process_command(self, command, *arguments, **named):
        argument = arguments[0] if arguments else ""
        if options.echo and command in ("USER", "PASS"):
            self.given += " " + argument
        if self in silent:
            return
        self.log_arrival(command, argument)
        if self.breaks():
            return
        if command in options.no:
            self.respond(f"500 Command {command} not understood.")
        elif self.is_targeted(argument) and self.does_something_odd(command):
            return
        elif options.delay:
            proceed = super().process_command
            self.ioloop.call_later(options.delay, lambda: self._closed or proceed(command, *arguments, **named))
        else:
            super().process_command(command, *arguments, **named)

    @staticmethod
    def is_targeted(argument):
        return options.only is None or fnmatch.fnmatchcase(os.path.basename(argument), options.only)

    def does_something_odd(self, command):
        if is_odd(options.hang, command):
            silent.add(self)
            return True
        if is_odd(options.drop, command):
            self.close()
            return True
        for reply in options.reply:
            name, _, text = reply.partition("=")
            if is_odd(name, command):
                self.respond(text)
                return True
        return False

    def on_login(self, username):
        self.fs.cwd = options.start

    @staticmethod
    def log_arrival(command, argument):
        if not options.log:
            return
        if argument == options.root or argument.startswith(options.root + "/"):
            argument = argument[len(options.root):] or "/"
        with open(options.log, "a", encoding="utf8", errors="surrogateescape") as file:
            file.write(f"{command} {'*' if command == 'PASS' else argument}".rstrip() + "\n")

    def breaks(self, data=None):
        """Breaks this step if that is its turn; `data` is the data connection that the step is about."""
        way = breaking.next_step()
        if way == "stall":
            silent.add(self)
            if data:
                data.del_channel()  # no longer polled, not closed
        elif way == "reset":
            for channel in filter(None, (self, self.data_channel)):
                channel.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.close()
        elif way == "close":
            self.close()
        elif way:
            if data:
                data._resp = (way, None)
                data.close()
            else:
                self.respond(way)
            if way.startswith("421"):
                self.close_when_done()
        return way is not None

    def push(self, text):
        if self not in silent:
            super().push(text)

    def respond(self, text, *arguments, **named):
        if self.is_renaming and text.startswith("250") and is_odd(options.drop, "renamed"):
            self.close()
            return
        super().respond(text + self.given, *arguments, **named)

    def handle(self):
        if self.breaks():
            return
        if is_odd(options.hang, "greeting"):
            silent.add(self)
        elif is_odd(options.drop, "greeting"):
            self.close()
        else:
            super().handle()


class OddData:
    """The data connection."""

    transferred = 0
    decided = False  # one transfer is one occasion

    def ends_here(self, size):
        self.transferred += size
        if self.decided or self.transferred < ODD_AFTER:
            return False
        self.decided = True
        while options.hold and os.path.exists(options.hold):
            time.sleep(0.01)
        if is_odd(options.hang, "data"):
            silent.add(self.cmd_channel)
            self.del_channel()  # no longer polled, not closed
        elif is_odd(options.drop, "data"):
            self.cmd_channel.close()
        else:
            return False
        return True

    def recv(self, size):
        data = super().recv(min(size, CHUNK))
        return b"" if not data or self.ends_here(len(data)) or self.cmd_channel.breaks(self) else data

    def send(self, data):
        size = super().send(data)
        self.ends_here(size or 0)
        return size

    def handle_close(self):
        if self.receive and self.cmd_channel not in silent:
            if self.cmd_channel.breaks(self):
                return
            if is_odd(options.hang, "done"):
                silent.add(self.cmd_channel)
            elif is_odd(options.drop, "done"):
                self.cmd_channel.close()
                return
        super().handle_close()


def odd_variant(control, data):
    class Data(OddData, data):
        ac_in_buffer_size = ac_out_buffer_size = CHUNK
        if options.rate:
            read_limit = write_limit = options.rate

    class Control(OddControl, control):
        dtp_handler = Data
        abstracted_fs = Files
        banner = "test server"
        use_sendfile = False
        timeout = 0
        auth_failed_timeout = 0
        permit_foreign_addresses = False
        unicode_errors = "surrogateescape"

    return Control


def plain_variant():
    class Plain(odd_variant(FTPHandler, ThrottledDTPHandler if options.rate else DTPHandler)):
        # Known only to be refused, or to be answered as --reply says.
        proto_cmds = FTPHandler.proto_cmds | {"AUTH": {"perm": None, "auth": False, "arg": True, "help": ""}}

        def ftp_AUTH(self, kind):
            self.respond("500 Command AUTH not understood.")

    return Plain


def tls_variant():
    from pyftpdlib.handlers import TLS_DTPHandler, TLS_FTPHandler

    class PatientData(TLS_DTPHandler):
        """curl starts the data handshake before it says STOR or RETR, on which pyftpdlib would hang up."""

        def readable(self):
            return self._ssl_accepting or super().readable()

    class ThrottledData(ThrottledDTPHandler, PatientData):
        pass

    class Explicit(odd_variant(TLS_FTPHandler, ThrottledData if options.rate else PatientData)):
        certfile = options.cert
        tls_control_required = tls_data_required = True

    class Implicit(Explicit):
        def handle(self):
            self.secure_connection(self.get_ssl_context())
            self._pbsz = self._prot = True
            super().handle()

    return Implicit if options.tls == "implicit" else Explicit


def end_with_stdin():
    while os.read(0, 4096):
        pass
    os._exit(0)


def main():
    os.makedirs(options.root, exist_ok=True)
    logging.basicConfig(level=logging.CRITICAL)
    if options.tls:
        handler = tls_variant()
    else:
        handler = plain_variant()
    if options.passive:
        handler.passive_ports = range(options.passive[0], options.passive[1] + 1)
    handler.authorizer = DummyAuthorizer()
    handler.authorizer.add_user(options.user, options.password, options.root, perm="elradfmwMT")
    server = FTPServer(("127.0.0.1", options.port), handler)
    print(server.socket.getsockname()[1], "/", sep="\n", flush=True)
    threading.Thread(target=end_with_stdin, daemon=True).start()
    try:
        server.serve_forever(handle_exit=False)
    except KeyboardInterrupt:
        sys.exit(1)


if __name__ == "__main__":
    main()
