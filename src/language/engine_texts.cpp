#include "language/engine_texts.h"
#include "language/translation.h"

#include <initializer_list>

namespace zembrastel {
namespace {

constexpr std::initializer_list<const char*> texts{
    // The titles of states.
    translatable("Paused"), translatable("Nothing selected"), translatable("Choose download contents"),
    translatable("Needs attention"), translatable("Starting"), translatable("Checking server"),
    translatable("Server check needs attention"), translatable("Choose what to upload"),
    translatable("Comparing contents"), translatable("Review remote changes"),
    translatable("Downloading server changes"), translatable("Downloading"), translatable("Retrying download"),
    translatable("Needs download selection"), translatable("Watching"), translatable("Changes queued"),
    translatable("Uploading"), translatable("Waiting to retry"),
    // The details of states.
    translatable("Changes will wait until you start watching."),
    translatable("Choose files or folders in Edit sync contents to resume syncing."),
    translatable("Local changes will upload when you resume."),
    translatable("The profile could not be saved, and does not run: %text"),
    translatable("Comparing server dates before any local changes upload…"),
    translatable("Uploads remain paused; the check will retry automatically."),
    translatable("Uploads remain paused. Retry the server check to review the latest versions."),
    translatable("Uploads remain paused. What was compared is kept: retry the server check to continue."),
    translatable("Uploads are paused until you choose. Nothing has been changed on the server."),
    translatable("Nothing is uploaded before you choose."),
    translatable("%1 newer server files found. Uploads are paused until you choose which versions to keep."),
    translatable("Replacing %1 selected local files, with backups."),
    translatable("Local changes upload automatically. Checking every 2 seconds."),
    translatable("Waiting for files to finish saving…"), translatable("Copying server files into your local folder…"),
    translatable("Retrying in %1 seconds."), translatable("Some files did not stop changing."),
    translatable("None of the synchronised files is there: the local folder %1 is empty. Perhaps its disk is not "
                 "mounted. Nothing is uploaded or forgotten until there are files in it again."),
    translatable("Another disk, or none, is mounted at the local folder: none of the files that were synchronised is "
                 "in it. The server is left as it is."),
    translatable("It was interrupted."), translatable("They were changed again meanwhile."),
    translatable("There is no network connection."),
    translatable("Nothing is wrong with the profile. Zembrastel goes on when the network is back."),
    translatable("The server does not let you read this folder."),
    translatable("The server did not create the folder %1."),
    translatable("A file may already have this name, or your user name may not write there."),
    translatable("A folder cannot have this name: %1"),
    translatable("There is no room to compare %1: a copy of it in %2 could not be written (%3). Free some space there, "
                 "or start Zembrastel with TMPDIR set to a folder with more."),
    // The lines of the activity log.
    translatable("The server does not send %1, so the contents cannot be compared. Let your user name read them there, "
                 "or choose without comparing them."),
    translatable("The server does not send %1 and %2 more, so the contents cannot be compared. Let your user name read "
                 "them there, or choose without comparing them."),
    translatable("1 file has a new date but the same content and is not sent."),
    translatable("%1 files have a new date but the same content and are not sent."), translatable("Watching started."),
    translatable("Watching paused."), translatable("Starting initial server download."),
    translatable("Initial download complete. Watching for local changes."),
    translatable("Checking for newer server files before watching resumes."),
    translatable("Server comparison skipped by your choice; pending local edits may replace remote copies."),
    translatable("The local folder is back."), translatable("Uploaded %1"), translatable("Uploading %1"),
    translatable("Downloading %1"), translatable("Downloading newer server copy: %1"),
    translatable("Downloaded newer server copy: %1 (previous local copy backed up)"),
    translatable("Updated older local file: %1 (previous local copy backed up)"),
    translatable("Kept local item with a different type: %1"),
    translatable("Kept local file with the same or newer date: %1"), translatable("Kept existing local file: %1"),
    translatable("Kept %1 local files with the same or newer date."),
    translatable("Not replaced, because they changed on the server: %1. The server is checked again before anything is "
                 "uploaded."),
    translatable(
        "Not downloaded, because they changed meanwhile: %1. The server is checked again before anything is uploaded."),
    translatable("The same files are newer on the server as when you decided: that decision is carried out."),
    translatable("Other files are newer on the server than when you decided: nothing was done by that decision."),
    translatable("The same on the server and here, so recorded without a question: %1"),
    translatable("Compared all files with the server. The same there: %1. To be sent again: %2."),
    translatable("1 file is missing on the server: %1. Waiting for your choice."),
    translatable("%1 files are missing on the server: %2. Waiting for your choice."),
    translatable("Found %1 newer server files. Waiting for your review."),
    translatable("Found %1 of %2 files on the server. Waiting for your choice."),
    translatable("Found %1 of 1 file on the server. Waiting for your choice."),
    translatable("Comparing contents with the server."), translatable("Different: %1"),
    translatable("More files that differ are only counted."),
    translatable("%1 of %2 files are the same on the server."),
    translatable("%1 of 1 file are the same on the server."),
    translatable("The comparison was stopped. What was compared is kept."),
    translatable("All files are uploaded, by your choice."),
    translatable("%1 of %2 files count as published, by your choice."),
    translatable("%1 of 1 file count as published, by your choice."),
    translatable("Still open for writing in another program after two minutes; uploaded as it is: %1"),
    translatable("Could not save sync state: %text"), translatable("Comparing the remote folder"),
    translatable("Comparing %1"),
    // Items that are left out.
    translatable("Left out, because %1: %2"), translatable("Left out, because its name is not valid UTF-8: %1"),
    translatable("Left out, because its name has a control character or a line break: %1"),
    translatable("Left out, because its name is longer than 255 bytes: %1"),
    translatable("Left out, because it is nested more than 128 levels deep: %1"),
    translatable("Left out, because it holds the password: %1"),
    translatable("Left out, because it is the state folder of this program: %1"),
    translatable("Left out, because on the server it leads back to a folder above it: %1"),
    translatable("Its name is not valid UTF-8."), translatable("Its name has a control character or a line break."),
    translatable("Its name is longer than 255 bytes."), translatable("It is nested more than 128 levels deep."),
    // Failures of transfers, and what to do.
    translatable("Check the protocol and the port in the profile."),
    translatable("Nothing is wrong with the profile. Try again in some minutes."),
    translatable("The server closed the connection."), translatable("The server has no space left for your files."),
    translatable("Delete files there, or ask the hosting provider for more space."),
    translatable("You may not write to this folder on the server."),

    translatable("Ask the hosting provider to let this user name write there."),
    translatable("The server's name or the remote folder is not valid."), translatable("Check both in the profile."),
    translatable("The server name %1 is not known."),
    translatable("Check the name in the profile, and whether this machine is online."),
    translatable("There is no answer from %1 at port %2."),
    translatable("Check the server's name and the port in the profile, and whether this machine is online."),
    translatable("The folder %1 does not exist on %2."),
    translatable("Create it, or choose another folder in the profile."),
    translatable("Choose another folder in the profile."), translatable("The server did not send what was requested."),
    translatable("Check whether your user name may read the folder."), translatable("The server refused a command."),
    translatable("Ask the hosting provider whether files on the server may be replaced and renamed."),
    translatable("The server does not accept this file name."),
    translatable("Give the file another name, or exclude it in the profile."),
    translatable("The server takes no further connection."),
    translatable("Close other FTP programs that use this account, or try again in some minutes."),
    translatable("%1 does not answer."),
    translatable("Check the server's name and the port in the profile. A firewall may also block the connection."),
    translatable("The server and this machine do not agree on an encryption."),
    translatable("The certificate of %1 cannot be verified."),
    translatable("Nothing has been sent, not even the password. Check the server's name, or trust its key."),
    translatable("The key of %1 has changed."),
    translatable("It is not the one that this profile trusts. Either your provider has replaced the key, or another "
                 "server is in between. Nothing has been sent, not even the password."),
    translatable("It is not the one that this profile trusts. Nothing has been sent, not even the password."),
    translatable("The server does not encrypt."),
    translatable("Choose another protocol in the profile, or ask the hosting provider for FTPS."),
    translatable("The server refused the username or the password."),
    translatable("Check both in the profile, then test the connection there."),
    translatable("The file does not exist on the server."), translatable("It may have been removed meanwhile."),
    translatable("The transfer failed."), translatable("The details have the reason."),
    translatable("Transfer failed."),
    translatable("There is no room to compare %1: a copy of it in %2 could not be written (%3). Free some space there, "
                 "or start Zembrastel with TMPDIR set to a folder with more."),
    translatable("The server does not send %1, so the contents cannot be compared. Let your user name read them there, "
                 "or choose without comparing them."),
    // Uploads.
    translatable("This server does not report the sizes of files, so it cannot be verified that uploads are complete."),
    translatable("The server confirmed the upload of %1, but does not have it. The live file was not replaced; the "
                 "upload will be retried."),
    translatable(
        "The server stored %1 bytes of %2, which has %3. The live file was not replaced; the upload will be retried."),
    translatable("This server does not let an upload be continued."),
    translatable("This computer is too slow at present to replace %1 without the risk of losing a newer version on the "
                 "server. The upload will be retried."),
    translatable("The server confirmed the renaming of the uploaded %1, but has another file in its place, or none. "
                 "The upload will be retried."),
    translatable("There is no room for a copy of %1 to upload from: it has %2, and %3 has %4 free. Free some space "
                 "there, or start Zembrastel with TMPDIR set to a folder with more. The other files are not affected."),
    translatable("File changed before uploading; it will be retried."),
    translatable("File changed while preparing the upload; it will be retried."),
    // Downloads, comparisons and backups.
    translatable("The server sent only a part of the directory listing of %1. None of it is used."),
    translatable("The server's filenames are not UTF-8."), translatable("The server's directory listing is too long."),
    translatable("The server's file is too long."), translatable("The server returned an unsafe filename."),
    translatable("The server returned an invalid MLSD directory listing."),
    translatable("The server listing has no file type."),
    translatable("Cannot safely read this server's directory format. The server should support MLSD or standard "
                 "Unix/Windows LIST."),
    translatable("The remote folder is nested more than 128 levels deep."),
    translatable("The server returned an unreadable modification date for %1."),
    translatable("The server did not provide a modification date for %1. Uploads remain paused until you choose how to "
                 "proceed."),
    translatable("%1 changed locally after the comparison. Review it again before replacing it."),
    translatable("%1 was edited locally while downloading. The local edit was kept; check again."),
    translatable("%1 changed while making its backup. The local copy was kept; check again."),
    translatable("%1 changed on the server after the comparison. Check again for the latest version."),
    translatable("%1 changed on the server during the download. The local copy was kept; check again."),
    translatable("%1 was not downloaded: it changed on the server meanwhile."),
    translatable("%1 was not downloaded: the server reported a size of %2 bytes and sent %3."),
    translatable("This version of %1 is no longer in %2."),
    translatable("%1 changed while it was being restored. The local file was kept; restore it again."),
    translatable("%1 is no file in the local folder now. It was left as it is."),
    translatable("Names that differ only in case or in the form of accents can be one file on the server: %1"),
    translatable("The files that are newer on the server are no longer those that you decided on. Nothing was changed. "
                 "Review the files again."),
    // Local folders and profiles.
    translatable("The local folder is unavailable or unreadable."), translatable("Cannot read the local folder."),
    translatable("A file moved outside the selected local folder while scanning."),
    translatable("The local folder is nested more than %1 levels deep."),
    translatable("A folder holds too many files."), translatable("Refusing to follow a local symbolic link: %1"),
    translatable("The local folder has been replaced by a symbolic link."), translatable("Unsafe local path."),
    translatable("Invalid filename."), translatable("Enter a name, server, username and local folder."),
    translatable("Use a hostname or IPv4 address without ftp://, a path or a port. Enter the port separately."),
    translatable("The FTP username cannot contain a colon or a line break."),
    translatable("FTP passwords cannot contain line breaks or null characters."),
    translatable("Enter a remote folder without . or .. path components."),
    translatable("Choose an existing local folder."),
    translatable("The local folder cannot be used, because its path is not valid UTF-8: %1. Rename the folder or "
                 "choose another."),
    translatable("The name, the server, the username, the remote folder, the exclusions and the selected paths must be "
                 "valid UTF-8."),
    translatable("Choose the initial download files and folders before starting. Open Edit profile, choose the "
                 "contents, and save your selection."),
    translatable("Another active profile already watches this local folder. Pause it before using this profile."),
    translatable("This folder is already being watched by another profile."),
    translatable("No files or folders are selected. Use Edit sync contents to choose what to sync."),
    translatable("There is a profile of this name already."), translatable("It has no local folder."),
    translatable("There is no folder %1 here."),
    translatable("Could not load saved profiles: %1. Your saved file has been left untouched."),
    translatable("The state folder %1 was moved away or replaced while the program ran. Nothing is saved until it is "
                 "back, or the program is started again"),
    translatable("Profile storage is unavailable. Restart the app after correcting the startup error."),
    translatable("Two versions of the program that do not know each other are in use: restart the one that runs."),
    translatable("The message was not understood."),
    // Passwords.
    translatable("The secret store cannot be asked now: %text"), translatable("Keychain: %text"),
    translatable("No password is stored for this profile; it must be entered again"),
    translatable("The password is not valid text"),
    translatable("The stored password is not valid text; it must be entered again"),
    translatable("No secret service is running"),
    translatable("No secret service is running, since there is no session bus"),
    translatable("The secret store is locked and was not unlocked"),
    translatable("The secret service has no collection to keep passwords in"),
    translatable("The secret service did not hand out the secret it holds"),
    translatable("Give the password with --password-file or --password-command instead."),
    // Imports.
    translatable("It uses SFTP; only FTP and FTPS are supported."), translatable("It uses neither FTP nor FTPS."),
    translatable("It names no server."), translatable("Its protocol cannot be read."),
    translatable("It is not encrypted; choose FTPS if the server can."),
    translatable("FileZilla encrypts where the server can; here the server has to."),
    translatable("Its password cannot be used and was not taken over."),
    translatable("Its password cannot be read and was not taken over."),
    translatable("Its password is locked by FileZilla's master password and was not taken over."),
    translatable("It names no remote folder; \"/\" is taken."),
    translatable("The site names no remote folder; \"/\" is taken."),
    translatable("The site's remote folder cannot be read; \"/\" is taken."),
    translatable("The local folder %1 is one of another system."),
    translatable("The rules of its \"ignoreFile\" were not taken over."),
    translatable("What \"ignore\" says was not taken over: %1"), translatable("it is not there any more"),
    translatable("it is not a file"), translatable("it holds no connections"),
    translatable("it is not a site manager file of FileZilla"),
    translatable("it is larger than 4 MB, which no such file is"),
    // Progress.
    translatable("%1 kB sent, waiting for the server"), translatable("%1 MB sent, waiting for the server"),
    translatable("%1 of %2 kB"), translatable("%1 of %2 MB"), translatable("%1 of %2 GB"),
    translatable("%1 of %2 kB sent"), translatable("%1 of %2 MB sent"), translatable("%1 of %2 GB sent"),
    translatable("%1 of %2 files"), translatable("%1 of %2 files done"), translatable("%1 of %2 files found so far"),
    translatable("in %1 folders"), translatable("in %1 folder"), translatable("Compared %1 files in %2 folders so far"),
    translatable("Compared %1 files in %2 folder so far"), translatable("Compared %1 file in %2 folder so far"),
    translatable("waiting for the server"), translatable("%1 kB sent"), translatable("%1 MB sent"),
    translatable("%1 GB sent"), translatable("less than 1 kB/s"), translatable("a few seconds left"),
    translatable("about %1 seconds left"), translatable("about %1 minute left"), translatable("about %1 minutes left"),
    translatable("about %1 hour left"), translatable("about %1 hours left"),
    // Mistakes on the command line, in the words of its parser.
    translatable("%1 is required"), translatable("%1 excludes %2"), translatable("%1: 1 required %2 missing"),
    // Errors of the system.
    translatable("Out of memory"), translatable("%1: No such file or directory"), translatable("%1: Permission denied"),
    translatable("%1: Operation not permitted"), translatable("%1: No space left on device"),
    translatable("%1: Read-only file system"), translatable("%1: Input/output error"),
    translatable("%1: Not a directory"), translatable("%1: Is a directory"), translatable("%1: Too many open files"),
    translatable("%1: Disk quota exceeded"), translatable("No space left on device")};

} // namespace

std::span<const char* const> engineTexts() { return {texts.begin(), texts.size()}; }

} // namespace zembrastel
