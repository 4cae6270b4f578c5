#!/usr/bin/python3
"""built_in_checks.py PROGRAM SERVERS CASE: runs the desktop program's built-in checks as a person would.

The program has no display, and an empty folder as its home and for all else that it keeps. SERVERS is where the FTP
servers were unpacked. Ends with an exception when something is not as it should be.
"""
import contextlib
import os
import socket
import subprocess
import sys
import tempfile

SERVER = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support/ftp_server.py")
LIMIT = 110  # seconds


def expect(condition, what, result):
    if not condition:
        raise AssertionError(f"{what}, but it ended with {result.returncode}:\n{result.stdout}{result.stderr}")


def run(program, *arguments):
    """The finished program, which has left nothing behind."""
    surplus = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")
    environment = {name: value for name, value in os.environ.items() if name not in surplus}
    environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
    with tempfile.TemporaryDirectory(prefix="zembrastel-checks-test-") as folder:
        environment.update(dict.fromkeys(("HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "TMPDIR"), folder))
        result = subprocess.run([program, *arguments], env=environment, capture_output=True, text=True,
                                stdin=subprocess.DEVNULL, timeout=LIMIT, check=False)
        left = os.listdir(folder)
    expect(not left, f"nothing should be left, neither {left}", result)
    return result


@contextlib.contextmanager
def server(servers, *lines):
    """A proftpd on a free port, which is the value; `lines` are for its configuration."""
    with tempfile.TemporaryDirectory(prefix="zembrastel-checks-test-") as folder:
        command = ["/usr/bin/python3", SERVER, "proftpd", "--servers", servers, *(f"--set={line}" for line in lines),
                   folder]
        with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as launcher:
            yield int(launcher.stdout.readline())
            launcher.stdin.close()  # ends it


@contextlib.contextmanager
def refusing(port):
    """Nobody will listen at this port of 127.0.0.1 meanwhile, unless somebody does already; 0 takes a free one."""
    with socket.socket() as holder:
        with contextlib.suppress(OSError, OverflowError):
            holder.bind(("127.0.0.1", port))
        yield port or holder.getsockname()[1]


def all_pass(result):
    *lines, count = result.stdout.splitlines()
    checks = [line for line in lines if not line.startswith("FTP server: ")]
    expect(result.returncode == 0 and checks, "all checks should pass", result)
    expect(all(line.startswith("ok    ") for line in checks), "every check should be ok", result)
    expect(count == f"{len(checks)} of {len(checks)} checks passed.", "the last line should be the count", result)
    expect(not result.stderr, "there should be no complaint", result)


def without_server(program, _servers):
    all_pass(run(program, "--self-test"))
    all_pass(run(program, "--nonsense", "--integration-test", "--self-test", "--help"))


def with_server(program, servers):
    with server(servers) as port:
        all_pass(run(program, "--integration-test", str(port)))


def with_a_server_that_replaces_nothing(program, servers):
    """A fault in the middle: those that meet it fail, the others go on."""
    with server(servers, "AllowOverwrite off") as port:
        result = run(program, "--integration-test", f"+{port}")
    expect(result.returncode == 1, "the exit code should be 1", result)
    expect("\nFAIL  later external FTP edit is offered on next restart: curl: (" in result.stdout,
           "a check that needs an overwritten file should fail with the server's reason", result)
    expect("\nok    sync selector includes local-only folders\n" in result.stdout, "others should pass", result)
    expect(result.stdout.endswith("\n2 of 11 checks passed.\n"), "the last line should be the count", result)


def no_check_begins(result, port):
    expect(f"127.0.0.1, port {port}." in result.stdout, f"port {port} should be asked", result)
    if port == 2121 and "No check could begin" not in result.stdout:
        return  # somebody's own test server
    expect(result.returncode == 1, "the exit code should be 1", result)
    expect("\nNo check could begin: curl: (" in result.stdout, "the transport's reason should be told", result)
    expect(f" -p {port} -u web -P s3cret" in result.stdout, "it should say how to start one", result)
    expect("FAIL" not in result.stdout and "checks passed" not in result.stdout, "no check should begin", result)


def where_no_server_is(program, _servers):
    with refusing(0) as port:
        no_check_begins(run(program, "--integration-test", str(port)), port)
    no_check_begins(run(program, "--integration-test", "-7"), -7)
    with refusing(2121) as port:
        for other in ((), ("nonsense",), ("9" * 20, "--demo"), ("",)):
            no_check_begins(run(program, "--demo", "--integration-test", *other), port)
    joined = run(program, f"--integration-test={port}")
    expect(joined.returncode == 2 and "The port follows after a blank." in joined.stderr, "that is no switch", joined)


CASES = {case.__name__: case
         for case in (without_server, with_server, with_a_server_that_replaces_nothing, where_no_server_is)}

if __name__ == "__main__":
    CASES[sys.argv[3]](sys.argv[1], sys.argv[2])
