#!/usr/bin/python3
"""Runs one real FTP server on a loopback port for a test: proftpd, vsftpd or pureftpd.

Prints two lines once it listens: the port, and the login folder's path as a client sees it. Runs until its stdin
closes or SIGTERM comes; every session then ends at once, with the transfer under way. Sessions also end when this
program itself is killed.

This program listens and gives each connection to a fresh server process, so no server daemon is ever started. The
server binaries need not be installed: --servers names the folder they were unpacked in (see scripts/setup).

Login is web / s3cret; vsftpd serves anonymous, with any password. Any user may run proftpd and vsftpd, pureftpd needs
root and serves as uid 65534. Only proftpd as root and pureftpd chroot: elsewhere "/" is the machine's own root.
"""
import argparse
import ctypes
import grp
import os
import pwd
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile

USER, PASSWORD = "web", "s3cret"
PURE_FTPD_UID = 65534  # pureftpd refuses to serve as uid 0
PR_SET_CHILD_SUBREAPER = 36  # linux/prctl.h


def parse_arguments():
    here = os.path.dirname(os.path.realpath(__file__))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kind", choices=["proftpd", "vsftpd", "pureftpd"])
    parser.add_argument("root", help="the folder to serve; made when missing")
    parser.add_argument("--servers", metavar="DIR", default=os.path.join(here, "../../build/servers/root"),
                        help="where the server packages were unpacked")
    parser.add_argument("--port", type=int, default=0, help="listen here instead of on a free port")
    parser.add_argument("--tls", choices=["explicit", "implicit"])
    parser.add_argument("--cert", metavar="FILE", help="PEM file with key and certificate")
    parser.add_argument("--rate", type=int, metavar="KIB", help="KiB a second for one transfer")
    parser.add_argument("--passive", type=int, nargs=2, metavar=("FIRST", "LAST"), help="ports of data connections")
    parser.add_argument("--show-hidden", action="store_true", help="LIST shows names with a leading dot")
    parser.add_argument("--set", action="append", default=[], metavar="LINE",
                        help="a configuration line in place of the default of that name; for pureftpd a switch")
    options = parser.parse_args()
    options.root = os.path.realpath(options.root)
    options.servers = os.path.realpath(options.servers)
    if options.tls and not options.cert:
        parser.error("--tls needs --cert")
    if not os.path.isdir(options.servers):
        parser.error(f"no servers in {options.servers}: run scripts/setup")
    if options.cert:
        options.cert = os.path.realpath(options.cert)
    if options.kind == "pureftpd" and os.getuid() != 0:
        parser.error("pureftpd can be started by root only")
    if options.kind == "pureftpd" and options.tls == "implicit":
        parser.error("pureftpd has no implicit TLS")
    return options


def find_names(options, folder):
    """The names of this user and group; those that the machine does not know are made known to the servers alone."""
    options.names = {}
    try:
        options.user, options.group = pwd.getpwuid(os.getuid()).pw_name, grp.getgrgid(os.getgid()).gr_name
    except KeyError:
        options.user = options.group = USER
        write_lines(f"{folder}/users", [f"{USER}:x:{os.getuid()}:{os.getgid()}::{options.root}:/bin/sh"])
        write_lines(f"{folder}/groups", [f"{USER}:x:{os.getgid()}:"])
        options.names = {"LD_PRELOAD": "libnss_wrapper.so", "NSS_WRAPPER_PASSWD": f"{folder}/users",
                         "NSS_WRAPPER_GROUP": f"{folder}/groups"}


def password_hash():
    command = ["openssl", "passwd", "-6", "-salt", "loopback", PASSWORD]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def with_replacements(lines, replacements, separator):
    """The lines, those that a replacement is for left out, then the replacements."""
    replaced = {line.split(separator)[0] for line in replacements}
    return [line for line in lines if line.split(separator)[0] not in replaced] + replacements


def write_lines(path, lines):
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="utf8") as file:
        file.write("".join(line + "\n" for line in lines))


def proftpd_command(options, folder):
    uid, gid = os.getuid(), os.getgid()
    lines = [
        "ServerName test",
        "DefaultAddress 127.0.0.1",  # else it looks up the host name, which need not resolve
        "ServerType inetd",
        "UseIPv6 off",
        "UseReverseDNS off",
        f"User {options.user}",
        f"Group {options.group}",
        "ScoreboardFile none",
        "ControlsEngine off",
        "DelayEngine off",
        "WtmpLog off",
        "SystemLog none",
        "TransferLog none",
        "AuthOrder mod_auth_file.c",
        f"AuthUserFile {folder}/passwd",
        "RequireValidShell off",
        "UseFtpUsers off",
        "RootLogin on",
        "AllowOverwrite on",
        "Umask 022",
    ]
    if uid == 0:
        lines += ["DefaultRoot ~"]
    if options.show_hidden:
        lines += ["ListOptions -a"]
    if options.rate:
        lines += [f"TransferRate STOR,RETR {options.rate}"]
    if options.passive:
        lines += ["PassivePorts {} {}".format(*options.passive)]
    if options.tls:
        lines += [
            f"ModulePath {options.servers}/usr/lib/proftpd",
            "LoadModule mod_tls.c",
            "TLSEngine on",
            "TLSRequired on",
            f"TLSECCertificateFile {options.cert}",
            f"TLSECCertificateKeyFile {options.cert}",
            "TLSVerifyClient off",
        ]
    if options.tls == "implicit":
        lines += ["TLSOptions UseImplicitSSL"]
    write_lines(f"{folder}/passwd", [f"{USER}:{password_hash()}:{uid}:{gid}::{options.root}:/bin/sh"])
    write_lines(f"{folder}/conf", with_replacements(lines, options.set, " "))
    return [f"{options.servers}/usr/sbin/proftpd", "-c", f"{folder}/conf"]


def vsftpd_command(options, folder):
    os.mkdir(f"{folder}/empty")
    lines = [
        "listen=NO",
        "anonymous_enable=YES",
        "local_enable=NO",
        f"anon_root={options.root}",
        f"secure_chroot_dir={folder}/empty",
        "run_as_launching_user=YES",
        f"ftp_username={options.user}",
        "write_enable=YES",
        "anon_upload_enable=YES",
        "anon_mkdir_write_enable=YES",
        "anon_other_write_enable=YES",
        "anon_world_readable_only=NO",
        "anon_umask=022",
        "file_open_mode=0644",
        "seccomp_sandbox=NO",
        "isolate=NO",
        "isolate_network=NO",
        "connect_from_port_20=NO",
        "xferlog_enable=NO",
    ]
    if options.show_hidden:
        lines += ["force_dot_files=YES"]
    if options.rate:
        lines += [f"anon_max_rate={options.rate * 1024}"]
    if options.passive:
        lines += ["pasv_min_port={}".format(options.passive[0]), "pasv_max_port={}".format(options.passive[1])]
    if options.tls:
        lines += [
            "ssl_enable=YES",
            "allow_anon_ssl=YES",
            "force_anon_logins_ssl=YES",
            "force_anon_data_ssl=YES",
            f"rsa_cert_file={options.cert}",
            f"rsa_private_key_file={options.cert}",
            "ssl_ciphers=HIGH",
        ]
    if options.tls == "implicit":
        lines += ["implicit_ssl=YES"]
    write_lines(f"{folder}/conf", with_replacements(lines, options.set, "="))
    return [f"{options.servers}/usr/sbin/vsftpd", f"{folder}/conf"]


def pureftpd_command(options, folder):
    os.chown(options.root, PURE_FTPD_UID, PURE_FTPD_UID)
    account = f"{USER}:{password_hash()}:{PURE_FTPD_UID}:{PURE_FTPD_UID}::{options.root}/./::::::::::::"
    write_lines(f"{folder}/passwd", [account])
    make_database = [f"{options.servers}/usr/bin/pure-pw", "mkdb", f"{folder}/db", "-f", f"{folder}/passwd"]
    subprocess.run(make_database, check=True, env=server_environment(options))
    command = [f"{options.servers}/usr/sbin/pure-ftpd", "-4", "-H", "-E", "-u", "1", "-l", f"puredb:{folder}/db"]
    if options.show_hidden:
        command += ["-D"]
    if options.rate:
        command += ["-T", str(options.rate)]
    if options.passive:
        command += ["-p", "{}:{}".format(*options.passive)]
    if options.tls:
        command += ["-Y", "3", "-2", options.cert]
    return command + options.set


def server_environment(options):
    lib = f"{options.servers}/usr/lib"
    multiarch = [entry.path for entry in os.scandir(lib) if entry.is_dir() and entry.name.endswith("-gnu")]
    return {**os.environ, "LC_ALL": "C.UTF-8", "LD_LIBRARY_PATH": ":".join(multiarch), **options.names}


def children():
    """The child processes of this one, as numbers."""
    for entry in os.scandir("/proc"):
        if entry.name.isdigit():
            try:
                with open(f"/proc/{entry.name}/stat", "rb") as file:
                    fields = file.read().rpartition(b")")[2].split()
            except (FileNotFoundError, ProcessLookupError):
                continue
            if int(fields[1]) == os.getpid():
                yield int(entry.name)


def adopt_orphans():
    """Makes every process that an ended child leaves behind a child of this one."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_children():
    """Kills all that runs below this process and waits until it is gone. Needs adopt_orphans()."""
    try:
        while True:
            for child in children():
                os.kill(child, signal.SIGKILL)
            os.wait()
    except ChildProcessError:
        pass


def reap(*_):
    try:
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass
    except ChildProcessError:
        pass


COMMANDS = {"proftpd": proftpd_command, "vsftpd": vsftpd_command, "pureftpd": pureftpd_command}


def start_session(command, environment, connection):
    actions = [(os.POSIX_SPAWN_DUP2, connection.fileno(), 0), (os.POSIX_SPAWN_DUP2, connection.fileno(), 1)]
    os.posix_spawn(command[0], command, environment, file_actions=actions, setsigmask=[],
                   setsigdef=[signal.SIGPIPE, signal.SIGTERM, signal.SIGCHLD])


def has_login_at_top(options):
    return options.kind == "pureftpd" or (options.kind == "proftpd" and os.getuid() == 0)


def serve(options, folder, launcher):
    """Returns when the launcher at the other end of this socket has gone."""
    find_names(options, folder)
    command, environment = COMMANDS[options.kind](options, folder), server_environment(options)
    signal.signal(signal.SIGCHLD, reap)
    with socket.create_server(("127.0.0.1", options.port), backlog=64) as listener:
        print(listener.getsockname()[1], "/" if has_login_at_top(options) else options.root, sep="\n", flush=True)
        while launcher not in (ready := select.select([listener, launcher], [], [])[0]):
            connection, _ = ready[0].accept()
            with connection:
                start_session(command, environment, connection)


def clear_away(folder):
    end_children()
    shutil.rmtree(folder, ignore_errors=True)


def run_listener(options, folder, launcher):
    os.setsid()  # an interrupt typed at a terminal is the launcher's business
    adopt_orphans()
    try:
        serve(options, folder, launcher)
    finally:
        signal.signal(signal.SIGCHLD, signal.SIG_DFL)
        clear_away(folder)


def main():
    """Splits into two processes that end each other: whichever is killed, the other ends the sessions.

    A parent-death signal would not do: the kernel forgets it when a server changes its user, and what a server forks
    never has it. A process group would not do: vsftpd leaves it.
    """
    options = parse_arguments()
    os.makedirs(options.root, exist_ok=True)
    folder = tempfile.mkdtemp(prefix="zembrastel-ftp-")
    adopt_orphans()
    ours, theirs = socket.socketpair()
    listener = os.fork()
    if listener == 0:
        ours.close()
        run_listener(options, folder, theirs)
        return
    theirs.close()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    try:
        while ours not in select.select([0, ours], [], [])[0] and os.read(0, 4096):
            pass
    except KeyboardInterrupt:
        pass
    finally:
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        ours.close()
        _, status = os.waitpid(listener, 0)
        clear_away(folder)
    sys.exit(os.waitstatus_to_exitcode(status) != 0)


if __name__ == "__main__":
    main()
