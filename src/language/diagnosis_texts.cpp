#include "language/engine_translation.h"
#include "language/translation.h"

#include <initializer_list>

namespace zembrastel {
namespace {

constexpr std::initializer_list<const char*> textsOfDiagnosis{
    translatable("Connecting, logging in and listing the remote folder."),
    translatable("Listing the remote folder in the other form."),
    translatable("Asking for the date of %1"),
    translatable("Uploading a test file, which is deleted again: %1"),
    translatable("Uploading a test file without a dot before its name: %1"),
    translatable("Uploading the test file again, over the one that is there."),
    translatable("Deleting the test file."),
    translatable("The local folder exists."),
    translatable("The local folder %1 does not exist."),
    translatable("Connect the disk it is on, or choose another local folder in the profile."),
    translatable("There is an answer at port %1."),
    translatable("The name %1 is known."),
    translatable("Nothing is wrong with the profile. Try again when the network is back."),

    translatable("Check the server's name in the profile. If it is right, check whether this machine is online."),
    translatable("The server takes the user name and the password."),
    translatable("The connection is encrypted, and the server has the key that the profile trusts."),
    translatable("The connection is encrypted, and the server's certificate trusted."),
    translatable("Nothing is encrypted: anyone on the network path can read the password and all files."),
    translatable("Ask the hosting provider whether the server has FTPS, and choose it in the profile."),
    translatable("The folder %1 can be opened."),
    translatable("The server lists with dates (MLSD): %1 items in the folder."),
    translatable("The server lists with dates (MLSD): 1 item in the folder."),
    translatable("The server lists without dates (LIST, no MLSD): %1 items in the folder."),
    translatable("The server lists without dates (LIST, no MLSD): 1 item in the folder."),
    translatable("All works, with one more question to the server for each file that is compared. Ask the hosting "
                 "provider whether there is a server with MLSD."),
    translatable("Names that begin with a dot are listed."),
    translatable("The folder shows no name that begins with a dot; only --write finds out more."),
    translatable("There is no file in the folder whose date could be asked for; --write makes one."),
    translatable("The server reports the date of a file."),
    translatable("The server's clock agrees with this machine's."),
    translatable("No file is dated in the future; only --write compares the server's clock."),
    translatable("A test file was uploaded under a temporary name and renamed."),
    translatable("The test file was deleted again; nothing is left of it."),
    translatable("It was replaced by a second upload in the same way."),
    translatable("Not the name of this server, %1"),
    translatable("Signed by itself, not by an authority"),
    translatable("Signed by an unknown authority"),
    translatable("Expired on %1"),
    translatable("Not valid before %1"),
    translatable("Refused by this machine"),
    translatable("The server's certificate cannot be verified."),
    translatable("The server's certificate cannot be read."),
    translatable("The connection to %1 is not encrypted: there is no certificate."),

    translatable("There is no answer from %1, port %2."),

    translatable("It says: %1"),
    translatable("Check the remote folder in the profile."),
    translatable("Without a slash at its beginning it starts in the login folder, with one at the server's root."),
    translatable("Ask the hosting provider which folder the site is in."),

    translatable("The server takes the login and does not list the folder."),
    translatable("Listings and files go over connections of their own (passive mode), which a firewall may stop."),
    translatable("Ask the hosting provider which ports passive mode uses, whether they are open, and whether the "
                 "account may list the folder."),
    translatable("The server's listing of the folder cannot be read: it is in a form of its own, or holds names that "
                 "are not in UTF-8 or special files."),
    translatable("Ask the hosting provider whether the server has MLSD and uses UTF-8."),
    translatable("Check for special files, such as sockets, and names with odd letters in the folder."),
    translatable("The server cuts the listing of a large folder off, at %1 items."),
    translatable("What is beyond is neither offered nor compared."),
    translatable("Ask the hosting provider to raise the limit above the number of files in the largest folder "
                 "(pure-ftpd: -L 20000:5), or spread the files over more folders."),
    translatable("The server's listings leave out names that begin with a dot, such as %1."),
    translatable("The server's listings leave out names that begin with a dot."),
    translatable("Files like .htaccess are uploaded all the same, but a newer version on the server is not noticed."),
    translatable("Ask the hosting provider to have them listed (proftpd: ListOptions -a; vsftpd: force_dot_files=YES; "
                 "pure-ftpd: -D)."),
    translatable("The server does not report the date of a file."),
    translatable("Without it Zembrastel cannot find newer files on the server."),
    translatable("Ask the hosting provider to allow the command MDTM."),
    translatable("The date of a file that was just uploaded is %9 ahead: the server reports dates in its local time, "
                 "not in UTC."),
    translatable("The date of a file that was just uploaded is %9 behind: the server reports dates in its local time, "
                 "not in UTC."),
    translatable("The date of a file that was just uploaded is %9 ahead: the server's clock is off."),
    translatable("The date of a file that was just uploaded is %9 behind: the server's clock is off."),
    translatable("Asked for the date of a file, the server reports another one than in its listing, %9 ahead: the "
                 "server reports dates in its local time, not in UTC."),
    translatable("Asked for the date of a file, the server reports another one than in its listing, %9 behind: the "
                 "server reports dates in its local time, not in UTC."),
    translatable("A file on the server is dated %9 in the future: the server reports dates in its local time, not in "
                 "UTC, or its clock is off."),
    translatable("Files look newer or older than they are, so wrong versions may be offered."),
    translatable("Ask the hosting provider to have dates reported in UTC (vsftpd: use_localtime=NO)."),
    translatable("Check this machine's own clock; if that is right, ask the hosting provider to set the server's."),
    translatable("--write finds out which it is."),
    translatable(
        "Ask the hosting provider to have dates reported in UTC (vsftpd: use_localtime=NO), and the clock set."),
    translatable("The server did not delete the test, which is left in the folder: %1."),
    translatable("It is not needed: delete it in another way."),
    translatable("Zembrastel itself never deletes files on the server, so it works without that right."),
    translatable("The server does not rename a file over one that is there."),
    translatable("So files can be uploaded once and never again."),
    translatable("Ask the hosting provider to allow it (proftpd: AllowOverwrite on)."),
    translatable("A second upload of the test file failed."),
    translatable("The server refuses names that begin with a dot."),
    translatable("Every upload begins under such a name (.zembrastel-…), so none works."),
    translatable("Ask the hosting provider to allow names with a leading dot, or at least those that begin with "
                 ".zembrastel- (proftpd: PathDenyFilter; vsftpd: deny_file; pure-ftpd: -x)."),
    translatable("The server takes a file and does not let it be renamed."),
    translatable("Every upload ends with giving the file its name, so none works."),
    translatable(
        "Ask the hosting provider to allow the commands RNFR and RNTO (vsftpd: cmds_denied; pure-ftpd: without -G)."),
    translatable("The server takes no file in this folder."),
    translatable(
        "Ask the hosting provider whether the account may write in this folder, and whether its space is used up."),
    translatable("In the profile choose FTPS (TLS), usually with port 21."),
    translatable("In the profile choose FTPS (implicit TLS) for this port, or FTPS (TLS) with port 21."),
    translatable("Ask the hosting provider which kind of FTPS the server has, and at which port."),
    translatable("It has expired."),
    translatable("It is for another name."),
    translatable("Ask the hosting provider to renew the certificate of the FTP server."),
    translatable("Check this machine's date as well."),

    translatable("Ask the hosting provider for the name that the FTP server's certificate is for, often that of the "
                 "machine, and use it in the profile."),

    translatable(
        "Ask the hosting provider for a certificate from a known authority, with all intermediate certificates."),
    translatable("Do not go on without: an attacker could pass for the server and read the password."),
    translatable("The server takes logins only when they are encrypted."),
    translatable(
        "Check both; the password is often not that of the mail account or the hosting provider's customer pages."),
    translatable(
        "Ask the hosting provider whether the FTP account is active, and whether it may be used from your address."),
    translatable("Check the port: usually 21, and 990 for FTPS (implicit TLS)."),
    translatable("Ask the hosting provider for the FTP port and whether FTP is switched on."),
    translatable("Check the name and the port."),
    translatable("A firewall, here or at the hosting provider's, may drop the connection: ask the hosting provider "
                 "whether your address is let in."),

    translatable("Close other FTP programs that use this account and try again in some minutes."),
    translatable("Ask the hosting provider how many connections an account may have; Zembrastel needs one for each "
                 "profile that is at work, and some more while its windows show folders of the server."),
    translatable("The server answers and hangs up."),
    translatable("Try again later."),
    translatable("Ask the hosting provider why the server refuses connections from your address."),

    translatable("Ask the hosting provider whether the server has a new key before you trust it."),

    translatable("Ask the hosting provider whether the server has FTPS, of which kind and at which port."),
    translatable("Only where it has none, choose FTP in the profile: the password then travels readable."),
    translatable("The server does not begin with TLS at this port."),
    translatable("Ask the hosting provider to let the FTP server use TLS 1.2 or 1.3."),
    translatable("The server says nothing: at port 990 it usually waits for TLS from the first moment."),
    translatable("Something takes the connection at %1, port %2 and says nothing."),
    translatable("Check the port: this may be no FTP server, or one that waits for TLS from the first moment, for "
                 "which there is FTPS (implicit TLS)."),
    translatable("Ask the hosting provider for port and kind of encryption."),
    translatable("The key of %1 has changed: the profile trusts %2."),
    translatable("It is issued for %1."),
    translatable("Its key is %1."),
    translatable(
        "Use %1 as the server in the profile: the certificate is for this name, which leads to the same server."),
    translatable("If that is not possible, ask the hosting provider for the SHA-256 of the server's key."),
    translatable("Ask the hosting provider for the SHA-256 of the server's key."),
    translatable("If it is the one above, trust it with the command \"profile trust\"."),
    translatable("An attacker's server would have another key."),
};

} // namespace

std::span<const char* const> diagnosisTexts() { return {textsOfDiagnosis.begin(), textsOfDiagnosis.size()}; }

} // namespace zembrastel
