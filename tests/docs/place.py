"""Where a document is followed: a home folder with a site in it, and the server that it calls ftp.example.com.

Nothing outside is read or changed. The server is a real one on a loopback port, with explicit TLS. What the document
says is turned into what is here, and what is printed back into the document's words.
"""
import os
import re
import shutil
import subprocess
import tempfile

HERE = os.path.dirname(os.path.realpath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
SUPPORT = os.path.join(SOURCE, "tests/support")

HOME = "/home/me"
HOST, PORT = "ftp.example.com", "21"
SITE = "/public_html"
PASSWORD = "s3cret"

WEBSITE = {
    "index.html": "<h1>My website</h1>\n",
    "style.css": "h1 { color: #256; }\n",
    "images/logo.svg": '<svg xmlns="http://www.w3.org/2000/svg"/>\n',
    ".htaccess": "Options -Indexes\n",
    ".env": "SECRET=1\n",
}

SITE_MANAGER = """<?xml version="1.0" encoding="UTF-8"?>
<FileZilla3 version="3.63.0" platform="*nix">
  <Servers>
    <Server>
      <Host>{host}</Host><Port>{port}</Port><Protocol>4</Protocol><Type>0</Type>
      <User>web</User><Pass encoding="base64">czNjcmV0</Pass><Logontype>1</Logontype>
      <Name>Garden shop</Name>
      <RemoteDir>1 0 {folders}</RemoteDir>
    </Server>
    <Server>
      <Host>backup.example.com</Host><Port>22</Port><Protocol>1</Protocol><Type>0</Type>
      <User>me</User><Logontype>0</Logontype>
      <Name>Old backups</Name>
    </Server>
  </Servers>
</FileZilla3>
"""


def read(name):
    """A file of the source."""
    with open(os.path.join(SOURCE, name), encoding="utf8") as file:
        return file.read()


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf8") as file:
        file.write(text)


class Place:
    def __init__(self, programs, servers):
        self.folder = tempfile.mkdtemp(prefix="docs.", dir="/tmp")  # sockets allow no long path
        self.home = os.path.join(self.folder, "home")
        self.served = os.path.join(self.folder, "server")
        os.makedirs(os.path.join(self.served, SITE.strip("/")))
        os.makedirs(os.path.join(self.folder, "tmp"), 0o700)
        certificates = os.path.join(self.folder, "certificates")
        subprocess.run([os.path.join(SUPPORT, "make_certificates"), certificates], check=True)
        # pylint: disable-next=consider-using-with
        self.server = subprocess.Popen(
            ["/usr/bin/python3", os.path.join(SUPPORT, "ftp_server.py"), "proftpd", "--servers", servers, "--tls",
             "explicit", "--cert", os.path.join(certificates, "server.pem"), self.served],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.port = self.server.stdout.readline().strip()
        login = self.server.stdout.readline().strip()
        self.site = SITE if login == "/" else login + SITE
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("XDG_", "QT_", "WAYLAND_"))}
        self.environment = kept | {
            "HOME": self.home, "PATH": f"{programs}:/usr/bin:/bin", "TMPDIR": os.path.join(self.folder, "tmp"),
            "XDG_RUNTIME_DIR": os.environ["XDG_RUNTIME_DIR"], "LC_ALL": "C.UTF-8", "LANGUAGE": "", "TZ": "UTC",
            "TERM": "xterm", "QT_QPA_PLATFORM": "offscreen", "CURL_CA_BUNDLE": os.path.join(certificates, "ca.pem"),
            "SERVER": os.path.join(self.served, SITE.strip("/"))}
        self.environment.pop("DISPLAY", None)
        self.fill_home()

    def fill_home(self):
        for name, text in WEBSITE.items():
            write(os.path.join(self.home, "website", name), text)
        folders = " ".join(f"{len(name)} {name}" for name in self.site.strip("/").split("/"))
        write(os.path.join(self.home, ".config/filezilla/sitemanager.xml"),
              SITE_MANAGER.format(host="localhost", port=self.port, folders=folders))
        os.makedirs(os.path.join(self.home, "garden"))
        write(os.path.join(self.home, ".ftp-password"), PASSWORD + "\n")
        shutil.copy(self.environment["CURL_CA_BUNDLE"], os.path.join(self.home, "authority.pem"))
        os.symlink(SOURCE, os.path.join(self.home, "zembrastel"))

    def here(self, command):
        """The document's command, for this machine."""
        command = command.replace(f"--host {HOST}", f"--host localhost --port {self.port}")
        return re.sub(r"(?<![\w/])" + SITE, self.site, command)

    def there(self, printed):
        """What was printed here, in the document's words."""
        printed = printed.replace(self.home, HOME).replace(self.site, SITE)
        printed = printed.replace("localhost", HOST)
        return re.sub(rf"\b{self.port}\b", PORT, printed)

    def run(self, command):
        """For setting the stage."""
        subprocess.run(["bash", "-c", self.here(command)], cwd=self.home, env=self.environment, check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.stdin.close()
        self.server.wait()
        shutil.rmtree(self.folder, ignore_errors=True)
