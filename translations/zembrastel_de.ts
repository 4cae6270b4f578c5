<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>EditorRules</name>
    <message>
        <source>Saving…</source>
        <translation>Wird gespeichert…</translation>
    </message>
    <message>
        <source>Choose download contents…</source>
        <translation>Download-Inhalte auswählen…</translation>
    </message>
    <message>
        <source>Create profile &amp; download</source>
        <translation>Profil anlegen &amp; herunterladen</translation>
    </message>
    <message>
        <source>Save &amp; resynchronise</source>
        <translation>Speichern &amp; neu abgleichen</translation>
    </message>
    <message>
        <source>Create profile</source>
        <translation>Profil anlegen</translation>
    </message>
    <message>
        <source>Save changes</source>
        <translation>Änderungen speichern</translation>
    </message>
    <message>
        <source>FTP sends your password and files without encryption.</source>
        <translation>FTP sendet Passwort und Dateien unverschlüsselt.</translation>
    </message>
    <message>
        <source>TLS encrypts transfers and verifies the server certificate.</source>
        <translation>TLS verschlüsselt Übertragungen und überprüft das Zertifikat des Servers.</translation>
    </message>
    <message>
        <source>No download contents chosen yet</source>
        <translation>Noch keine Inhalte zum Herunterladen ausgewählt</translation>
    </message>
    <message numerus="yes">
        <source>Connected. The remote folder is readable (%n items). Upload permission is checked when a file uploads.</source>
        <translation>
            <numerusform>Verbunden. Der Server-Ordner ist lesbar (%n Element). Das Recht zum Hochladen wird beim Hochladen einer Datei geprüft.</numerusform>
            <numerusform>Verbunden. Der Server-Ordner ist lesbar (%n Elemente). Das Recht zum Hochladen wird beim Hochladen einer Datei geprüft.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>FileSize</name>
    <message>
        <source>1 byte</source>
        <translation>1 Byte</translation>
    </message>
</context>
<context>
    <name>KeyringAccess</name>
    <message>
        <source>Unlock the desktop&apos;s keyring, or install one such as GNOME Keyring or KWallet, and start watching again. You can also enter the password again with Edit profile.</source>
        <translation>Den Schlüsselbund entsperren oder einen wie GNOME Keyring oder KWallet installieren und die Überwachung erneut starten. Das Passwort kann auch mit „Profil bearbeiten“ neu eingegeben werden.</translation>
    </message>
    <message>
        <source>Unlock the desktop&apos;s keyring and remove the profile again.</source>
        <translation>Den Schlüsselbund entsperren und das Profil erneut entfernen.</translation>
    </message>
</context>
<context>
    <name>LocalTime</name>
    <message>
        <source>Today, %1</source>
        <translation>Heute, %1</translation>
    </message>
    <message>
        <source>Yesterday, %1</source>
        <translation>Gestern, %1</translation>
    </message>
</context>
<context>
    <name>SelectionSummary</name>
    <message>
        <source>All files on the server</source>
        <translation>Alle Dateien auf dem Server</translation>
    </message>
    <message>
        <source>All files in the local folder</source>
        <translation>Alle Dateien im lokalen Ordner</translation>
    </message>
    <message numerus="yes">
        <source>%n items selected</source>
        <translation>
            <numerusform>%n Element ausgewählt</numerusform>
            <numerusform>%n Elemente ausgewählt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n folders</source>
        <translation>
            <numerusform>%n Ordner</numerusform>
            <numerusform>%n Ordner</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 selected</source>
        <translation>%1 ausgewählt</translation>
    </message>
    <message>
        <source>%1 and %2 selected</source>
        <translation>%1 und %2 ausgewählt</translation>
    </message>
    <message>
        <source>Nothing selected</source>
        <translation>Nichts ausgewählt</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message numerus="yes">
        <source>%n exceptions</source>
        <translation>
            <numerusform>%n Ausnahme</numerusform>
            <numerusform>%n Ausnahmen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>StatusSymbol</name>
    <message>
        <source>Sync in progress</source>
        <translation>Abgleich läuft</translation>
    </message>
</context>
<context>
    <name>TreeRow</name>
    <message>
        <source>Retry</source>
        <translation>Wiederholen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::AboutDialog</name>
    <message>
        <source>About Zembrastel</source>
        <translation>Über Zembrastel</translation>
    </message>
    <message>
        <source>Zembrastel</source>
        <translation>Zembrastel</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Keeps a local folder published to an FTP or FTPS server.</source>
        <translation>Veröffentlicht einen lokalen Ordner fortlaufend auf einem FTP- oder FTPS-Server.</translation>
    </message>
    <message>
        <source>© 2026 The Zembrastel developers. Free software under the MIT licence, without any warranty.</source>
        <translation>© 2026 Die Entwickler von Zembrastel. Freie Software unter der MIT-Lizenz, ohne jede Gewährleistung.</translation>
    </message>
    <message>
        <source>Running with Qt %1 and %2.</source>
        <translation>Läuft mit Qt %1 und %2.</translation>
    </message>
    <message>
        <source>Website</source>
        <translation>Website</translation>
    </message>
    <message>
        <source>Report a problem</source>
        <translation>Problem melden</translation>
    </message>
    <message>
        <source>Licence</source>
        <translation>Lizenz</translation>
    </message>
    <message>
        <source>Copy version</source>
        <translation>Version kopieren</translation>
    </message>
    <message>
        <source>Version copied</source>
        <translation>Version kopiert</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ActivityList</name>
    <message>
        <source>Recent activity</source>
        <translation>Letzte Aktivitäten</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Your uploads will appear here.</source>
        <translation>Hier erscheinen die hochgeladenen Dateien.</translation>
    </message>
    <message>
        <source>Edit a file in your local folder to get started.</source>
        <translation>Zum Beginnen eine Datei im lokalen Ordner bearbeiten.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::BackupListModel</name>
    <message>
        <source>Replaced: %1</source>
        <translation>Ersetzt: %1</translation>
    </message>
    <message>
        <source>Last changed: %1</source>
        <translation>Zuletzt geändert: %1</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::BackupsSheet</name>
    <message>
        <source>No versions</source>
        <translation>Keine Versionen</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n versions</source>
        <translation>
            <numerusform>%n Version</numerusform>
            <numerusform>%n Versionen</numerusform>
        </translation>
    </message>
    <message>
        <source>%1, %2, %3</source>
        <translation>%1, %2, %3</translation>
    </message>
    <message>
        <source>Kept versions</source>
        <translation>Aufbewahrte Versionen</translation>
    </message>
    <message>
        <source>Looking for backups…</source>
        <translation>Sicherungen werden gesucht…</translation>
    </message>
    <message>
        <source>Backups</source>
        <translation>Sicherungen</translation>
    </message>
    <message>
        <source>Whenever a local file of %1 is replaced, the old version is kept in .zembrastel-backups inside your local folder. Nothing is ever removed from there without you.</source>
        <translation>Wird eine lokale Datei von %1 ersetzt, so bleibt die alte Version in .zembrastel-backups im lokalen Ordner erhalten. Von dort wird nie etwas von selbst entfernt.</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Restore…</source>
        <translation>Wiederherstellen…</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>No backups yet</source>
        <translation>Noch keine Sicherungen</translation>
    </message>
    <message>
        <source>Versions appear here when you download newer server files over local ones.</source>
        <translation>Hier erscheinen Versionen, wenn neuere Dateien vom Server lokale Dateien ersetzen.</translation>
    </message>
    <message>
        <source>The backups could not be read</source>
        <translation>Die Sicherungen konnten nicht gelesen werden</translation>
    </message>
    <message>
        <source>No program could open the file. It is here: %1</source>
        <translation>Kein Programm konnte die Datei öffnen. Sie liegt hier: %1</translation>
    </message>
    <message>
        <source>Restore this version?</source>
        <translation>Diese Version wiederherstellen?</translation>
    </message>
    <message>
        <source>This restores the version of %1 that was replaced on %2. The current version is kept as a backup. %3</source>
        <translation>Die Version von %1, die am %2 ersetzt wurde, wird wiederhergestellt. Die jetzige Version bleibt als Sicherung erhalten. %3</translation>
    </message>
    <message>
        <source>While the profile is watched, the restored file is uploaded a few seconds later; otherwise when you next start watching.</source>
        <translation>Während das Profil überwacht wird, wird die wiederhergestellte Datei nach wenigen Sekunden hochgeladen, sonst beim nächsten Start der Überwachung.</translation>
    </message>
    <message>
        <source>The profile does not sync this file, so the server&apos;s copy stays as it is.</source>
        <translation>Das Profil gleicht diese Datei nicht ab, deshalb bleibt die Kopie auf dem Server unverändert.</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>%1 was restored. The version that it replaced is a backup now.</source>
        <translation>%1 wurde wiederhergestellt. Die ersetzte Version ist jetzt eine Sicherung.</translation>
    </message>
    <message>
        <source>%1 was restored.</source>
        <translation>%1 wurde wiederhergestellt.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::CertificateSheet</name>
    <message>
        <source>Certificate of %1</source>
        <translation>Zertifikat von %1</translation>
    </message>
    <message>
        <source>The server can be verified now. The server check is repeated.</source>
        <translation>Der Server kann jetzt überprüft werden. Die Serverprüfung wird wiederholt.</translation>
    </message>
    <message>
        <source>Not the name of this server, %1</source>
        <translation>Nicht der Name dieses Servers, %1</translation>
    </message>
    <message>
        <source>Signed by itself, not by an authority</source>
        <translation>Selbst signiert, nicht von einer Zertifizierungsstelle</translation>
    </message>
    <message>
        <source>Signed by an unknown authority</source>
        <translation>Von einer unbekannten Zertifizierungsstelle signiert</translation>
    </message>
    <message>
        <source>Expired on %1</source>
        <translation>Abgelaufen am %1</translation>
    </message>
    <message>
        <source>Not valid before %1</source>
        <translation>Nicht gültig vor dem %1</translation>
    </message>
    <message>
        <source>Refused by this machine</source>
        <translation>Von diesem Rechner abgelehnt</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy key</source>
        <translation>Schlüssel kopieren</translation>
    </message>
    <message>
        <source>The key of %1 has changed</source>
        <translation>Der Schlüssel von %1 hat sich geändert</translation>
    </message>
    <message>
        <source>Either your provider has replaced the key, or somebody has put another server in between. Uploads have stopped. Nothing has been sent, not even the password.</source>
        <translation>Entweder hat der Anbieter den Schlüssel ersetzt, oder ein fremder Server hat sich dazwischengeschaltet. Das Hochladen ist angehalten. Nichts wurde gesendet, auch nicht das Passwort.</translation>
    </message>
    <message>
        <source>The certificate cannot be verified</source>
        <translation>Das Zertifikat kann nicht überprüft werden</translation>
    </message>
    <message>
        <source>Zembrastel cannot tell whether %1 is your server. Nothing has been sent, not even the password.</source>
        <translation>Zembrastel kann nicht feststellen, ob %1 der richtige Server ist. Nichts wurde gesendet, auch nicht das Passwort.</translation>
    </message>
    <message>
        <source>Issued for</source>
        <translation>Ausgestellt für</translation>
    </message>
    <message>
        <source>Issued by</source>
        <translation>Ausgestellt von</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>Valid</source>
        <translation>Gültig</translation>
    </message>
    <message>
        <source>Key (SHA-256)</source>
        <translation>Schlüssel (SHA-256)</translation>
    </message>
    <message>
        <source>Trusted key</source>
        <translation>Akzeptierter Schlüssel</translation>
    </message>
    <message>
        <source>Trusted on %1</source>
        <translation>Akzeptiert seit %1</translation>
    </message>
    <message>
        <source>Key shown now</source>
        <translation>Jetzt gezeigter Schlüssel</translation>
    </message>
    <message>
        <source>Ask your provider which key is right before you trust the new one.</source>
        <translation>Zuerst den Anbieter fragen, welcher Schlüssel richtig ist, und erst dann dem neuen vertrauen.</translation>
    </message>
    <message>
        <source>What trusting it means</source>
        <translation>Was Vertrauen bedeutet</translation>
    </message>
    <message>
        <source>Zembrastel accepts this one key for this profile, whatever the certificate says. The connection is encrypted as usual. If the server ever shows another key, uploads stop and you are told.</source>
        <translation>Zembrastel akzeptiert für dieses Profil genau diesen Schlüssel, unabhängig vom Inhalt des Zertifikats. Die Verbindung ist wie gewohnt verschlüsselt. Zeigt der Server je einen anderen Schlüssel, wird das Hochladen angehalten und eine Meldung erscheint.</translation>
    </message>
    <message>
        <source>Trust it only if your provider states the same key.</source>
        <translation>Nur vertrauen, wenn der Anbieter denselben Schlüssel nennt.</translation>
    </message>
    <message>
        <source>Keep stopped</source>
        <translation>Angehalten lassen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Trust the new key for this profile…</source>
        <translation>Dem neuen Schlüssel für dieses Profil vertrauen…</translation>
    </message>
    <message>
        <source>Trust this certificate for this profile…</source>
        <translation>Dem Zertifikat für dieses Profil vertrauen…</translation>
    </message>
    <message>
        <source>Trust this key?</source>
        <translation>Diesem Schlüssel vertrauen?</translation>
    </message>
    <message>
        <source>Anyone who holds it can read and change what you upload.</source>
        <translation>Wer ihn besitzt, kann hochgeladene Dateien lesen und ändern.</translation>
    </message>
    <message>
        <source>Trust this key</source>
        <translation>Diesem Schlüssel vertrauen</translation>
    </message>
    <message>
        <source>First seen today, %1</source>
        <translation>Zuerst gesehen: heute, %1</translation>
    </message>
    <message>
        <source>First seen on %1, %2</source>
        <translation>Zuerst gesehen: am %1, %2</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ChangeListModel</name>
    <message>
        <source>Local: %1</source>
        <translation>Lokal: %1</translation>
    </message>
    <message>
        <source>Server: %1</source>
        <translation>Server: %1</translation>
    </message>
    <message>
        <source>Also changed locally since the last sync</source>
        <translation>Seit dem letzten Abgleich auch lokal geändert</translation>
    </message>
    <message>
        <source>Selected</source>
        <translation>Ausgewählt</translation>
    </message>
    <message>
        <source>Not selected</source>
        <translation>Nicht ausgewählt</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ChoiceBanner</name>
    <message>
        <source>None of your files is the same on the server.</source>
        <translation>Keine der Dateien ist auf dem Server gleich.</translation>
    </message>
    <message>
        <source>Your file is the same on the server.</source>
        <translation>Die Datei ist auf dem Server gleich.</translation>
    </message>
    <message>
        <source>Your file is on the server already.</source>
        <translation>Die Datei ist bereits auf dem Server.</translation>
    </message>
    <message numerus="yes">
        <source>All %n files are the same on the server.</source>
        <translation>
            <numerusform>Die Datei ist auf dem Server gleich.</numerusform>
            <numerusform>Alle %n Dateien sind auf dem Server gleich.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>All %n files are on the server already.</source>
        <translation>
            <numerusform>Die Datei ist bereits auf dem Server.</numerusform>
            <numerusform>Alle %n Dateien sind bereits auf dem Server.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n files are the same on the server.</source>
        <translation>
            <numerusform>%1 von %n Datei ist auf dem Server gleich.</numerusform>
            <numerusform>%1 von %n Dateien sind auf dem Server gleich.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n files are on the server already.</source>
        <translation>
            <numerusform>%1 von %n Datei ist bereits auf dem Server.</numerusform>
            <numerusform>%1 von %n Dateien sind bereits auf dem Server.</numerusform>
        </translation>
    </message>
    <message>
        <source>Their contents were compared.</source>
        <translation>Die Inhalte wurden verglichen.</translation>
    </message>
    <message>
        <source>Their contents match your local files.</source>
        <translation>Die Inhalte stimmen mit den lokalen Dateien überein.</translation>
    </message>
    <message>
        <source>Their names and sizes match your local files. Comparing contents downloads %1.</source>
        <translation>Namen und Größen stimmen mit den lokalen Dateien überein. Ein Vergleich der Inhalte lädt %1 herunter.</translation>
    </message>
    <message>
        <source>Their names and sizes match your local files. Comparing the other contents downloads %1.</source>
        <translation>Namen und Größen stimmen mit den lokalen Dateien überein. Ein Vergleich der übrigen Inhalte lädt %1 herunter.</translation>
    </message>
    <message numerus="yes">
        <source>Uploading the others replaces %n files on the server.</source>
        <translation>
            <numerusform>Das Hochladen der übrigen ersetzt %n Datei auf dem Server.</numerusform>
            <numerusform>Das Hochladen der übrigen ersetzt %n Dateien auf dem Server.</numerusform>
        </translation>
    </message>
    <message>
        <source>Start watching</source>
        <translation>Überwachung starten</translation>
    </message>
    <message numerus="yes">
        <source>Upload the other %n</source>
        <translation>
            <numerusform>Die übrige %n hochladen</numerusform>
            <numerusform>Die übrigen %n hochladen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Upload all %n</source>
        <translation>
            <numerusform>Alle %n hochladen</numerusform>
            <numerusform>Alle %n hochladen</numerusform>
        </translation>
    </message>
    <message>
        <source>Compare contents first</source>
        <translation>Zuerst Inhalte vergleichen</translation>
    </message>
    <message>
        <source>Stop comparing</source>
        <translation>Vergleich anhalten</translation>
    </message>
    <message numerus="yes">
        <source>Comparing %n files with the server</source>
        <translation>
            <numerusform>%n Datei wird mit dem Server verglichen</numerusform>
            <numerusform>%n Dateien werden mit dem Server verglichen</numerusform>
        </translation>
    </message>
    <message>
        <source>None differs so far. Nothing is uploaded before you decide.</source>
        <translation>Bisher gibt es keinen Unterschied. Vor der Entscheidung wird nichts hochgeladen.</translation>
    </message>
    <message numerus="yes">
        <source>%n differ so far. Nothing is uploaded before you decide.</source>
        <translation>
            <numerusform>%n Unterschied bisher. Vor der Entscheidung wird nichts hochgeladen.</numerusform>
            <numerusform>%n Unterschiede bisher. Vor der Entscheidung wird nichts hochgeladen.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ConfirmDialog</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Discard changes?</source>
        <translation>Änderungen verwerfen?</translation>
    </message>
    <message>
        <source>Discard changes</source>
        <translation>Änderungen verwerfen</translation>
    </message>
    <message>
        <source>Keep editing</source>
        <translation>Weiter bearbeiten</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ConnectionFields</name>
    <message>
        <source>My website</source>
        <translation>Meine Website</translation>
    </message>
    <message>
        <source>Profile name</source>
        <translation>Profilname</translation>
    </message>
    <message>
        <source>Protocol</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Username</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Remote folder</source>
        <translation>Server-Ordner</translation>
    </message>
    <message>
        <source>Paths beginning with / start at the FTP root. Other paths start in the login folder.</source>
        <translation>Pfade mit / am Anfang beginnen im FTP-Stammordner, andere im Anmeldeordner.</translation>
    </message>
    <message>
        <source>Hide password</source>
        <translation>Passwort verbergen</translation>
    </message>
    <message>
        <source>Show password</source>
        <translation>Passwort anzeigen</translation>
    </message>
    <message>
        <source>Reading from keyring…</source>
        <translation>Wird aus dem Schlüsselbund gelesen…</translation>
    </message>
    <message>
        <source>Choose a folder…</source>
        <translation>Ordner auswählen…</translation>
    </message>
    <message>
        <source>Choose a remote folder</source>
        <translation>Server-Ordner auswählen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ContentFields</name>
    <message>
        <source>Choose a folder…</source>
        <translation>Ordner auswählen…</translation>
    </message>
    <message>
        <source>Local folder</source>
        <translation>Lokaler Ordner</translation>
    </message>
    <message>
        <source>Excluded files and folders</source>
        <translation>Ausgeschlossene Dateien und Ordner</translation>
    </message>
    <message>
        <source>One name or wildcard per line. Applies to uploads and initial downloads. Symbolic links are always skipped.</source>
        <translation>Ein Name oder Platzhalter pro Zeile. Gilt für das Hochladen und das erste Herunterladen. Symbolische Verknüpfungen werden immer übersprungen.</translation>
    </message>
    <message>
        <source>Sync contents</source>
        <translation>Abgeglichene Inhalte</translation>
    </message>
    <message>
        <source>Choose files and folders…</source>
        <translation>Dateien und Ordner auswählen…</translation>
    </message>
    <message>
        <source>Edit sync contents…</source>
        <translation>Inhalte bearbeiten…</translation>
    </message>
    <message>
        <source>This list controls uploads, downloads and server checks. Adding items resynchronises them on save. Removing items keeps both copies and stops syncing them. Select none to pause the profile.</source>
        <translation>Diese Liste gilt für das Hochladen, das Herunterladen und die Serverprüfung. Hinzugefügte Elemente werden beim Speichern neu abgeglichen. Von entfernten Elementen bleiben beide Kopien erhalten, sie werden nicht mehr abgeglichen. Eine leere Auswahl pausiert das Profil.</translation>
    </message>
    <message>
        <source>Start watching this folder</source>
        <translation>Überwachung dieses Ordners starten</translation>
    </message>
    <message>
        <source>New and changed local files upload after watching starts.</source>
        <translation>Neue und geänderte lokale Dateien werden nach dem Start der Überwachung hochgeladen.</translation>
    </message>
    <message>
        <source>Download server files to the local folder first</source>
        <translation>Zuerst Dateien vom Server in den lokalen Ordner herunterladen</translation>
    </message>
    <message>
        <source>Downloads selected items that are missing locally or newer on the server. Older local versions are backed up before replacement. Watching starts afterwards for your selected sync contents.</source>
        <translation>Lädt ausgewählte Elemente herunter, die lokal fehlen oder auf dem Server neuer sind. Ältere lokale Versionen werden vor dem Ersetzen gesichert. Danach beginnt die Überwachung der ausgewählten Inhalte.</translation>
    </message>
    <message>
        <source>Choose download contents…</source>
        <translation>Download-Inhalte auswählen…</translation>
    </message>
    <message>
        <source>Expanded</source>
        <translation>Ausgeklappt</translation>
    </message>
    <message>
        <source>Collapsed</source>
        <translation>Eingeklappt</translation>
    </message>
    <message>
        <source>Choose the local folder to watch</source>
        <translation>Lokalen Ordner für die Überwachung auswählen</translation>
    </message>
    <message>
        <source>Choose a local folder</source>
        <translation>Lokalen Ordner auswählen</translation>
    </message>
    <message>
        <source>Compare contents</source>
        <translation>Inhalte vergleichen</translation>
    </message>
    <message>
        <source>Files that have a new date but the content that was uploaded before are not uploaded again.</source>
        <translation>Dateien mit neuem Datum, deren Inhalt bereits hochgeladen wurde, werden nicht erneut hochgeladen.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ContentTreeModel</name>
    <message>
        <source>Retry</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Selected</source>
        <translation>Ausgewählt</translation>
    </message>
    <message>
        <source>Partially selected</source>
        <translation>Teilweise ausgewählt</translation>
    </message>
    <message>
        <source>Not selected</source>
        <translation>Nicht ausgewählt</translation>
    </message>
    <message>
        <source>No name matches “%1”.</source>
        <translation>Kein Name passt zu „%1“.</translation>
    </message>
    <message numerus="yes">
        <source>%n names match.</source>
        <translation>
            <numerusform>%n Name passt.</numerusform>
            <numerusform>%n Namen passen.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 Folders that were not opened yet are not searched.</source>
        <translation>%1 Noch nicht geöffnete Ordner werden nicht durchsucht.</translation>
    </message>
    <message>
        <source>Local only</source>
        <translation>Nur lokal</translation>
    </message>
    <message>
        <source>Excluded</source>
        <translation>Ausgeschlossen</translation>
    </message>
    <message>
        <source>Empty folder</source>
        <translation>Leerer Ordner</translation>
    </message>
    <message>
        <source>Loading folder…</source>
        <translation>Ordner wird geladen…</translation>
    </message>
    <message>
        <source>This remote folder is empty.</source>
        <translation>Dieser Server-Ordner ist leer.</translation>
    </message>
    <message>
        <source>open folder</source>
        <translation>geöffneter Ordner</translation>
    </message>
    <message>
        <source>closed folder</source>
        <translation>geschlossener Ordner</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::CountersCard</name>
    <message>
        <source>UPLOADED THIS SESSION</source>
        <translation>UPLOADS (SITZUNG)</translation>
    </message>
    <message>
        <source>PENDING</source>
        <translation>OFFEN</translation>
    </message>
    <message>
        <source>LAST UPLOAD</source>
        <translation>LETZTER UPLOAD</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::DetailBanners</name>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>und %n weitere</numerusform>
            <numerusform>und %n weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Review newer server files…</source>
        <translation>Neuere Dateien auf dem Server prüfen…</translation>
    </message>
    <message>
        <source>Forget the missing files</source>
        <translation>Fehlende Dateien vergessen</translation>
    </message>
    <message>
        <source>Send again</source>
        <translation>Erneut senden</translation>
    </message>
    <message>
        <source>Leave them</source>
        <translation>So lassen</translation>
    </message>
    <message numerus="yes">
        <source>%n files are missing on the server.</source>
        <translation>
            <numerusform>%n Datei fehlt auf dem Server.</numerusform>
            <numerusform>%n Dateien fehlen auf dem Server.</numerusform>
        </translation>
    </message>
    <message>
        <source>It was uploaded before and is gone from the server now. Your local copy is unchanged.</source>
        <translation>Sie wurde früher hochgeladen und ist nicht mehr auf dem Server. Die lokale Kopie ist unverändert.</translation>
    </message>
    <message>
        <source>They were uploaded before and are gone from the server now. Your local copies are unchanged.</source>
        <translation>Sie wurden früher hochgeladen und sind nicht mehr auf dem Server. Die lokalen Kopien sind unverändert.</translation>
    </message>
    <message>
        <source>Leave it</source>
        <translation>So lassen</translation>
    </message>
    <message>
        <source>Newer files on the server</source>
        <translation>Neuere Dateien auf dem Server</translation>
    </message>
    <message>
        <source>The local folder is empty. If you deleted its files yourself, forget them; the copies on the server stay.</source>
        <translation>Der lokale Ordner ist leer. Wurden seine Dateien absichtlich gelöscht, können sie vergessen werden; die Kopien auf dem Server bleiben.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::DetailHeader</name>
    <message>
        <source>FOLDER SYNC</source>
        <translation>ORDNERABGLEICH</translation>
    </message>
    <message>
        <source>Pause watching</source>
        <translation>Überwachung pausieren</translation>
    </message>
    <message>
        <source>Start watching</source>
        <translation>Überwachung starten</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ElideLabel</name>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::FailureBanner</name>
    <message>
        <source>Details</source>
        <translation>Details</translation>
    </message>
    <message>
        <source>The next attempt is at %1.</source>
        <translation>Der nächste Versuch ist um %1.</translation>
    </message>
    <message>
        <source>%1 is tried again at %2.</source>
        <translation>%1 wird um %2 erneut versucht.</translation>
    </message>
    <message numerus="yes">
        <source>%n more files wait behind it.</source>
        <translation>
            <numerusform>%n weitere Datei wartet darauf.</numerusform>
            <numerusform>%n weitere Dateien warten darauf.</numerusform>
        </translation>
    </message>
    <message>
        <source>Review certificate…</source>
        <translation>Zertifikat prüfen…</translation>
    </message>
    <message>
        <source>Compare keys…</source>
        <translation>Schlüssel vergleichen…</translation>
    </message>
    <message>
        <source>Create it</source>
        <translation>Anlegen</translation>
    </message>
    <message>
        <source>Edit profile…</source>
        <translation>Profil bearbeiten…</translation>
    </message>
    <message>
        <source>Retry now</source>
        <translation>Jetzt wiederholen</translation>
    </message>
    <message>
        <source>Start without checking…</source>
        <translation>Ohne Prüfung starten…</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pausieren</translation>
    </message>
    <message>
        <source>Retry server check</source>
        <translation>Serverprüfung wiederholen</translation>
    </message>
    <message>
        <source>Expanded</source>
        <translation>Ausgeklappt</translation>
    </message>
    <message>
        <source>Collapsed</source>
        <translation>Eingeklappt</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::FolderTreeModel</name>
    <message>
        <source>Loading folder…</source>
        <translation>Ordner wird geladen…</translation>
    </message>
    <message>
        <source>This folder has no subfolders.</source>
        <translation>Dieser Ordner hat keine Unterordner.</translation>
    </message>
    <message>
        <source>Creating the folder %1…</source>
        <translation>Ordner %1 wird angelegt…</translation>
    </message>
    <message>
        <source>Name of the new folder</source>
        <translation>Name des neuen Ordners</translation>
    </message>
    <message>
        <source>%1, Retry</source>
        <translation>%1, Wiederholen</translation>
    </message>
    <message>
        <source>open folder</source>
        <translation>geöffneter Ordner</translation>
    </message>
    <message>
        <source>closed folder</source>
        <translation>geschlossener Ordner</translation>
    </message>
    <message>
        <source>Login folder</source>
        <translation>Anmeldeordner</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::FoldingRows</name>
    <message>
        <source>level %1</source>
        <translation>Ebene %1</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::HelpWindow</name>
    <message>
        <source>Search the manual</source>
        <translation>Handbuch durchsuchen</translation>
    </message>
    <message>
        <source>Zembrastel Help</source>
        <translation>Zembrastel-Hilfe</translation>
    </message>
    <message>
        <source>Contents</source>
        <translation>Inhalt</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ImportListModel</name>
    <message>
        <source>Skipped: %1</source>
        <translation>Übersprungen: %1</translation>
    </message>
    <message>
        <source>%1@%2:%3 · %4 · %5</source>
        <translation>%1@%2:%3 · %4 · %5</translation>
    </message>
    <message>
        <source>Imported.</source>
        <translation>Importiert.</translation>
    </message>
    <message>
        <source>Local folder: %1</source>
        <translation>Lokaler Ordner: %1</translation>
    </message>
    <message>
        <source>Choose local folder…</source>
        <translation>Lokalen Ordner auswählen…</translation>
    </message>
    <message>
        <source>Change…</source>
        <translation>Ändern…</translation>
    </message>
    <message>
        <source>Selected</source>
        <translation>Ausgewählt</translation>
    </message>
    <message>
        <source>Not selected</source>
        <translation>Nicht ausgewählt</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ImportSheet</name>
    <message>
        <source>Choose the file to import profiles from</source>
        <translation>Datei mit den Profilen auswählen</translation>
    </message>
    <message>
        <source>Sites and profiles (sitemanager.xml, sftp.json, exports) (*.xml *.json)</source>
        <translation>Server und Profile (sitemanager.xml, sftp.json, Exporte) (*.xml *.json)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Select all</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Select none</source>
        <translation>Auswahl leeren</translation>
    </message>
    <message>
        <source>Choose another file…</source>
        <translation>Andere Datei…</translation>
    </message>
    <message>
        <source>Import profiles</source>
        <translation>Profile importieren</translation>
    </message>
    <message>
        <source>Imported profiles are paused. Starting one uploads the files of its local folder, except excluded files. Passwords are stored in the desktop&apos;s keyring.</source>
        <translation>Importierte Profile sind pausiert. Der Start eines Profils lädt die Dateien seines lokalen Ordners hoch, außer ausgeschlossenen Dateien. Passwörter werden im Schlüsselbund der Arbeitsumgebung gespeichert.</translation>
    </message>
    <message>
        <source>Profiles found</source>
        <translation>Gefundene Profile</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Cannot import %1: %2.</source>
        <translation>%1 kann nicht importiert werden: %2.</translation>
    </message>
    <message>
        <source>There are no profiles in this file.</source>
        <translation>Diese Datei enthält keine Profile.</translation>
    </message>
    <message>
        <source>%1 of %2 selected</source>
        <translation>%1 von %2 gewählt</translation>
    </message>
    <message numerus="yes">
        <source>Import %n profiles</source>
        <translation>
            <numerusform>%n Profil importieren</numerusform>
            <numerusform>%n Profile importieren</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose the local folder of %1</source>
        <translation>Lokalen Ordner von %1 auswählen</translation>
    </message>
    <message>
        <source>Unlock the desktop&apos;s keyring and import again, or go on without it.</source>
        <translation>Den Schlüsselbund entsperren und erneut importieren oder ohne ihn fortfahren.</translation>
    </message>
    <message>
        <source>Keep the password for this session only</source>
        <translation>Passwort nur für diese Sitzung behalten</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::MainWindow</name>
    <message>
        <source>Zembrastel</source>
        <translation>Zembrastel</translation>
    </message>
    <message>
        <source>New Sync Profile…</source>
        <translation>Neues Profil…</translation>
    </message>
    <message>
        <source>Import profiles…</source>
        <translation>Profile importieren…</translation>
    </message>
    <message>
        <source>Remove this sync profile?</source>
        <translation>Dieses Profil entfernen?</translation>
    </message>
    <message>
        <source>This removes the saved connection and its Keychain password. Your local and remote files are kept.</source>
        <translation>Die gespeicherte Verbindung und ihr Passwort im Schlüsselbund werden entfernt. Lokale Dateien und Dateien auf dem Server bleiben erhalten.</translation>
    </message>
    <message>
        <source>Remove profile</source>
        <translation>Profil entfernen</translation>
    </message>
    <message>
        <source>Start without comparing server files?</source>
        <translation>Ohne Vergleich mit dem Server starten?</translation>
    </message>
    <message>
        <source>Queued local edits may overwrite newer server files. Use this only if you want to proceed without a successful comparison.</source>
        <translation>Wartende lokale Änderungen können neuere Dateien auf dem Server überschreiben. Nur verwenden, wenn ohne erfolgreichen Vergleich fortgefahren werden soll.</translation>
    </message>
    <message>
        <source>Start without checking</source>
        <translation>Ohne Prüfung starten</translation>
    </message>
    <message>
        <source>Send everything again?</source>
        <translation>Alles erneut senden?</translation>
    </message>
    <message>
        <source>Every file is compared with the server first. Identical files are skipped, and all others are uploaded. If the server has a version that was not uploaded from here, you decide first. A paused profile starts watching.</source>
        <translation>Zuerst wird jede Datei mit dem Server verglichen. Gleiche Dateien werden übersprungen, alle anderen hochgeladen. Hat der Server eine Version, die nicht von hier stammt, wird vorher gefragt. Bei einem pausierten Profil startet die Überwachung.</translation>
    </message>
    <message>
        <source>Send everything</source>
        <translation>Alles senden</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::MessageStrip</name>
    <message>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <source>Succeeded</source>
        <translation>Erfolgreich</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::NewPlaceDialog</name>
    <message>
        <source>%1 on %2</source>
        <extracomment>%1 is a folder, %2 a server.</extracomment>
        <translation>%1 auf %2</translation>
    </message>
    <message>
        <source>Zembrastel knows one file as uploaded to %1. The profile now names %2.</source>
        <translation>Eine Datei ist als nach %1 hochgeladen vermerkt. Im Profil steht jetzt %2.</translation>
    </message>
    <message numerus="yes">
        <source>Zembrastel knows %n files as uploaded to %1. The profile now names %2.</source>
        <translation>
            <numerusform>%n Datei ist als nach %1 hochgeladen vermerkt. Im Profil steht jetzt %2.</numerusform>
            <numerusform>%n Dateien sind als nach %1 hochgeladen vermerkt. Im Profil steht jetzt %2.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save changes</source>
        <translation>Änderungen speichern</translation>
    </message>
    <message>
        <source>What is in the new remote folder?</source>
        <translation>Was befindet sich im neuen Server-Ordner?</translation>
    </message>
    <message>
        <source>Not sure</source>
        <translation>Nicht sicher</translation>
    </message>
    <message>
        <source>Compares names and sizes there, then asks what to upload.</source>
        <translation>Vergleicht dort Namen und Größen und fragt dann, was hochgeladen werden soll.</translation>
    </message>
    <message>
        <source>The same site, moved</source>
        <translation>Dieselbe Website, umgezogen</translation>
    </message>
    <message>
        <source>Takes the file as uploaded already.</source>
        <translation>Betrachtet die Datei als bereits hochgeladen.</translation>
    </message>
    <message numerus="yes">
        <source>Takes all %n files as uploaded already.</source>
        <translation>
            <numerusform>Betrachtet %n Datei als bereits hochgeladen.</numerusform>
            <numerusform>Betrachtet alle %n Dateien als bereits hochgeladen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing, or something else</source>
        <translation>Nichts oder etwas anderes</translation>
    </message>
    <message>
        <source>Uploads the file. A file of the same name is replaced.</source>
        <translation>Lädt die Datei hoch. Eine Datei mit demselben Namen wird ersetzt.</translation>
    </message>
    <message numerus="yes">
        <source>Uploads all %n files. Files of the same name are replaced.</source>
        <translation>
            <numerusform>Lädt %n Datei hoch. Eine Datei mit demselben Namen wird ersetzt.</numerusform>
            <numerusform>Lädt alle %n Dateien hoch. Dateien mit demselben Namen werden ersetzt.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::Notifier</name>
    <message numerus="yes">
        <source>%n files are newer on the server.</source>
        <translation>
            <numerusform>%n Datei ist auf dem Server neuer.</numerusform>
            <numerusform>%n Dateien sind auf dem Server neuer.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1: newer files on the server</source>
        <translation>%1: neuere Dateien auf dem Server</translation>
    </message>
    <message>
        <source>Uploads are paused until you choose which versions to keep.</source>
        <translation>Das Hochladen ist pausiert, bis ausgewählt ist, welche Versionen bleiben.</translation>
    </message>
    <message>
        <source>Review</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>%1 cannot be kept up to date</source>
        <translation>%1 kann nicht aktuell gehalten werden</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>%1 is kept up to date again</source>
        <translation>%1 wird wieder aktuell gehalten</translation>
    </message>
    <message>
        <source>The problem is resolved.</source>
        <translation>Das Problem ist behoben.</translation>
    </message>
    <message>
        <source>Zembrastel keeps syncing</source>
        <translation>Zembrastel gleicht weiter ab</translation>
    </message>
    <message>
        <source>Its window is closed; its icon in the tray opens it again. Quitting stops transfers.</source>
        <translation>Das Fenster ist geschlossen; das Symbol im Infobereich öffnet es wieder. Beenden bricht Übertragungen ab.</translation>
    </message>
    <message>
        <source>Open window</source>
        <translation>Fenster öffnen</translation>
    </message>
    <message>
        <source>Nothing is wrong with your profiles. Zembrastel goes on when the network is back.</source>
        <translation>Die Profile sind in Ordnung. Zembrastel macht weiter, sobald das Netzwerk wieder da ist.</translation>
    </message>
    <message>
        <source>%1: choose what to upload</source>
        <translation>%1: auswählen, was hochgeladen wird</translation>
    </message>
    <message>
        <source>Some files are on the server already. Uploads are paused until you choose.</source>
        <translation>Einige Dateien sind bereits auf dem Server. Bis zur Auswahl wird nichts hochgeladen.</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileDetail</name>
    <message>
        <source>Copy details</source>
        <translation>Details kopieren</translation>
    </message>
    <message>
        <source>Backups…</source>
        <translation>Sicherungen…</translation>
    </message>
    <message>
        <source>Recent activity</source>
        <translation>Letzte Aktivitäten</translation>
    </message>
    <message>
        <source>Details copied</source>
        <translation>Details kopiert</translation>
    </message>
    <message>
        <source>Could not open the local folder in Finder. Check that the folder is still available.</source>
        <translation>Der lokale Ordner konnte nicht im Dateimanager geöffnet werden. Bitte prüfen, ob der Ordner noch vorhanden ist.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileEditor</name>
    <message>
        <source>Not available in the demonstration.</source>
        <translation>In der Vorführung nicht verfügbar.</translation>
    </message>
    <message>
        <source>Edit sync profile</source>
        <translation>Profil bearbeiten</translation>
    </message>
    <message>
        <source>New sync profile</source>
        <translation>Neues Profil</translation>
    </message>
    <message>
        <source>Connect a local folder to your web server.</source>
        <translation>Einen lokalen Ordner mit dem Webserver verbinden.</translation>
    </message>
    <message>
        <source>Test connection</source>
        <translation>Verbindung testen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>What you entered here has not been saved.</source>
        <translation>Die Eingaben sind nicht gespeichert.</translation>
    </message>
    <message>
        <source>This profile was removed meanwhile. Nothing that you entered is lost: create a new profile from it, or cancel.</source>
        <translation>Dieses Profil wurde inzwischen entfernt. Die Eingaben sind nicht verloren: Daraus ein neues Profil anlegen oder abbrechen.</translation>
    </message>
    <message>
        <source>There is no folder %1 on the server. Create it, or choose another one.</source>
        <translation>Auf dem Server gibt es keinen Ordner %1. Ordner anlegen oder einen anderen auswählen.</translation>
    </message>
    <message>
        <source>Create it</source>
        <translation>Anlegen</translation>
    </message>
    <message>
        <source>The remote folder was created.</source>
        <translation>Der Server-Ordner wurde angelegt.</translation>
    </message>
    <message>
        <source>Compare keys…</source>
        <translation>Schlüssel vergleichen…</translation>
    </message>
    <message>
        <source>Review certificate…</source>
        <translation>Zertifikat prüfen…</translation>
    </message>
    <message>
        <source>The remote folder is empty, so there is nothing to download. Your local files are uploaded.</source>
        <translation>Der Server-Ordner ist leer, deshalb gibt es nichts herunterzuladen. Die lokalen Dateien werden hochgeladen.</translation>
    </message>
    <message>
        <source>Unlock the desktop&apos;s keyring, or install one such as GNOME Keyring or KWallet, and save again. You can also go on without it and enter the password again next time.</source>
        <translation>Den Schlüsselbund entsperren oder einen wie GNOME Keyring oder KWallet installieren und erneut speichern. Es geht auch ohne; dann muss das Passwort beim nächsten Mal erneut eingegeben werden.</translation>
    </message>
    <message>
        <source>Keep the password for this session only</source>
        <translation>Passwort nur für diese Sitzung behalten</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileListDelegate</name>
    <message>
        <source>Profile menu</source>
        <translation>Profilmenü</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileListModel</name>
    <message numerus="yes">
        <source>%n files are missing</source>
        <translation>
            <numerusform>%n Datei fehlt</numerusform>
            <numerusform>%n Dateien fehlen</numerusform>
        </translation>
    </message>
    <message>
        <source>Edit profile, Remove profile</source>
        <translation>Profil bearbeiten, Profil entfernen</translation>
    </message>
    <message numerus="yes">
        <source>%n files cannot be uploaded</source>
        <translation>
            <numerusform>%n Datei kann nicht hochgeladen werden</numerusform>
            <numerusform>%n Dateien können nicht hochgeladen werden</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileListView</name>
    <message>
        <source>SYNC PROFILES</source>
        <translation>PROFILE</translation>
    </message>
    <message>
        <source>Edit profile</source>
        <translation>Profil bearbeiten</translation>
    </message>
    <message>
        <source>Send everything again…</source>
        <translation>Alles erneut senden…</translation>
    </message>
    <message>
        <source>Remove profile</source>
        <translation>Profil entfernen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProgressStrip</name>
    <message>
        <source>Comparison of contents</source>
        <translation>Vergleich der Inhalte</translation>
    </message>
    <message>
        <source>Transfer of %1</source>
        <translation>Übertragung von %1</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RefusedFilesBanner</name>
    <message>
        <source>They are tried again when they change.</source>
        <translation>Nach einer Änderung wird ihr Upload erneut versucht.</translation>
    </message>
    <message>
        <source>All other files are up to date. They are tried again when they change.</source>
        <translation>Alle anderen Dateien sind aktuell. Nach einer Änderung wird der Upload der genannten erneut versucht.</translation>
    </message>
    <message numerus="yes">
        <source>%n files cannot be uploaded.</source>
        <translation>
            <numerusform>%n Datei kann nicht hochgeladen werden.</numerusform>
            <numerusform>%n Dateien können nicht hochgeladen werden.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>und %n weitere</numerusform>
            <numerusform>und %n weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Retry %1</source>
        <translation>%1 wiederholen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RemoteChangesView</name>
    <message>
        <source>Keep local &amp; start watching</source>
        <translation>Lokale behalten &amp; Überwachung starten</translation>
    </message>
    <message numerus="yes">
        <source>Download %n &amp; start watching</source>
        <translation>
            <numerusform>%n herunterladen &amp; Überwachung starten</numerusform>
            <numerusform>%n herunterladen &amp; Überwachung starten</numerusform>
        </translation>
    </message>
    <message>
        <source>Uploads are paused. Choose the server versions to download before watching resumes. Downloading replaces those local files and keeps backups in .zembrastel-backups inside your local folder.</source>
        <translation>Das Hochladen ist pausiert. Vor der weiteren Überwachung die Versionen des Servers auswählen, die heruntergeladen werden sollen. Sie ersetzen die lokalen Dateien; Sicherungen bleiben in .zembrastel-backups im lokalen Ordner.</translation>
    </message>
    <message>
        <source>Unticked files keep their local versions. Pending local edits may upload and replace server copies when watching resumes.</source>
        <translation>Bei nicht ausgewählten Dateien bleibt die lokale Version. Ausstehende lokale Änderungen können beim Fortsetzen hochgeladen werden und Kopien auf dem Server ersetzen.</translation>
    </message>
    <message>
        <source>Newer files on the server</source>
        <translation>Neuere Dateien auf dem Server</translation>
    </message>
    <message>
        <source>%1 – %2</source>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>Select all</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Select none</source>
        <translation>Auswahl leeren</translation>
    </message>
    <message>
        <source>Stay paused</source>
        <translation>Pausiert lassen</translation>
    </message>
    <message>
        <source>%1 of %2 selected</source>
        <translation>%1 von %2 gewählt</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RemoteDownloadPicker</name>
    <message>
        <source>Files and folders</source>
        <translation>Dateien und Ordner</translation>
    </message>
    <message>
        <source>Choose what to synchronise</source>
        <translation>Abzugleichende Inhalte auswählen</translation>
    </message>
    <message>
        <source>Tick folders to sync all their contents, or expand folders to tick individual files. Unticked items stop syncing and keep their existing copies. Local-only items can be included too.</source>
        <translation>Ausgewählte Ordner werden mit dem ganzen Inhalt abgeglichen; in aufgeklappten Ordnern lassen sich einzelne Dateien auswählen. Nicht ausgewählte Elemente werden nicht mehr abgeglichen und behalten ihre Kopien. Auch nur lokal vorhandene Elemente sind möglich.</translation>
    </message>
    <message>
        <source>Choose what to download</source>
        <translation>Inhalte zum Herunterladen auswählen</translation>
    </message>
    <message>
        <source>Nothing is selected automatically. Tick files or whole folders, or choose Select all. Expand a folder to pick individual items. This selection also sets what will be watched for uploads.</source>
        <translation>Nichts ist von selbst ausgewählt. Dateien oder ganze Ordner auswählen oder „Alle auswählen“ drücken. In aufgeklappten Ordnern lassen sich einzelne Elemente auswählen. Diese Auswahl bestimmt auch, was für das Hochladen überwacht wird.</translation>
    </message>
    <message>
        <source>Excluded items are dimmed. Existing files update only if the server copy is newer; replaced local files are backed up.</source>
        <translation>Ausgeschlossene Elemente sind abgeblendet. Vorhandene Dateien werden nur durch neuere Kopien vom Server ersetzt; ersetzte lokale Dateien werden gesichert.</translation>
    </message>
    <message>
        <source>Select all</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Select none</source>
        <translation>Auswahl leeren</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Search names</source>
        <translation>Namen suchen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Use sync selection</source>
        <translation>Auswahl übernehmen</translation>
    </message>
    <message>
        <source>Use selection</source>
        <translation>Auswahl übernehmen</translation>
    </message>
    <message>
        <source>There is nothing to download.</source>
        <translation>Es gibt nichts herunterzuladen.</translation>
    </message>
    <message>
        <source>What you ticked here has not been applied.</source>
        <translation>Die Auswahl ist nicht übernommen.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RemoteFolderSheet</name>
    <message>
        <source>Folders on the server</source>
        <translation>Server-Ordner</translation>
    </message>
    <message>
        <source>Choose the remote folder</source>
        <translation>Server-Ordner auswählen</translation>
    </message>
    <message>
        <source>Zembrastel uploads to the folder that you choose on %1.</source>
        <translation>Zembrastel lädt in den ausgewählten Ordner auf %1 hoch.</translation>
    </message>
    <message>
        <source>New folder…</source>
        <translation>Neuer Ordner…</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Use this folder</source>
        <translation>Diesen Ordner verwenden</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RouteCard</name>
    <message>
        <source>Open in Finder</source>
        <translation>Im Dateimanager öffnen</translation>
    </message>
    <message>
        <source>Edit sync contents…</source>
        <translation>Inhalte bearbeiten…</translation>
    </message>
    <message>
        <source>Open local folder in Finder</source>
        <translation>Lokalen Ordner im Dateimanager öffnen</translation>
    </message>
    <message>
        <source>Open this local folder in Finder</source>
        <translation>Diesen lokalen Ordner im Dateimanager öffnen</translation>
    </message>
    <message>
        <source>Port %1</source>
        <translation>Port %1</translation>
    </message>
    <message>
        <source>LOCAL → SERVER</source>
        <translation>LOKAL → SERVER</translation>
    </message>
    <message>
        <source>LOCAL FOLDER</source>
        <translation>LOKALER ORDNER</translation>
    </message>
    <message>
        <source>REMOTE FOLDER</source>
        <translation>SERVER-ORDNER</translation>
    </message>
    <message>
        <source>Local deletions kept on server</source>
        <translation>Gelöschtes bleibt auf dem Server</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::SearchField</name>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::Shell</name>
    <message>
        <source>Quit Zembrastel</source>
        <translation>Zembrastel beenden</translation>
    </message>
    <message>
        <source>Show notifications</source>
        <translation>Benachrichtigungen anzeigen</translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation>Beim Anmelden starten</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>About Zembrastel</source>
        <translation>Über Zembrastel</translation>
    </message>
    <message>
        <source>The manual is not installed. It belongs to the package zembrastel-cli.</source>
        <translation>Das Handbuch ist nicht installiert. Es gehört zum Paket zembrastel-cli.</translation>
    </message>
    <message>
        <source>Zembrastel will start in the background when you log in: the entry %1 was written.</source>
        <translation>Zembrastel startet beim Anmelden im Hintergrund: Der Eintrag %1 wurde geschrieben.</translation>
    </message>
    <message>
        <source>Zembrastel will not start when you log in: the entry %1 was removed.</source>
        <translation>Zembrastel startet beim Anmelden nicht mehr: Der Eintrag %1 wurde entfernt.</translation>
    </message>
    <message>
        <source>Zembrastel keeps syncing</source>
        <translation>Zembrastel gleicht weiter ab</translation>
    </message>
    <message>
        <source>Its window is closed and this desktop has no tray to show it in. Start Zembrastel again to open the window; Ctrl+Q there quits and stops transfers.</source>
        <translation>Das Fenster ist geschlossen, und diese Arbeitsumgebung hat keinen Infobereich dafür. Ein neuer Start von Zembrastel öffnet das Fenster; Strg+Q beendet dort das Programm und bricht Übertragungen ab.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::Sidebar</name>
    <message>
        <source>New Sync Profile…</source>
        <translation>Neues Profil…</translation>
    </message>
    <message>
        <source>Quit Zembrastel</source>
        <translation>Zembrastel beenden</translation>
    </message>
    <message>
        <source>Filter profiles</source>
        <translation>Profile filtern</translation>
    </message>
    <message>
        <source>No profile matches “%1”.</source>
        <translation>Kein Profil passt zu „%1“.</translation>
    </message>
    <message>
        <source>SYNC PROFILES</source>
        <translation>PROFILE</translation>
    </message>
    <message>
        <source>Keep Zembrastel running to sync. Closing this window keeps it in the menu bar; quitting stops transfers.</source>
        <translation>Zum Abgleichen muss Zembrastel laufen. Nach dem Schließen des Fensters bleibt es im Infobereich; Beenden bricht Übertragungen ab.</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::TrayItem</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Open Zembrastel</source>
        <translation>Zembrastel öffnen</translation>
    </message>
    <message>
        <source>No sync profiles</source>
        <translation>Keine Profile</translation>
    </message>
    <message>
        <source>Quit Zembrastel</source>
        <translation>Zembrastel beenden</translation>
    </message>
    <message>
        <source>Pause %1</source>
        <translation>%1 pausieren</translation>
    </message>
    <message>
        <source>Start %1</source>
        <translation>%1 starten</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::TrustedKeyRow</name>
    <message>
        <source>Certificate is verified again after saving.</source>
        <translation>Das Zertifikat wird nach dem Speichern wieder überprüft.</translation>
    </message>
    <message>
        <source>Certificate trusted for this profile</source>
        <translation>Zertifikat für dieses Profil akzeptiert</translation>
    </message>
    <message>
        <source>Key %1, since %2. Its name and issuer are not verified.</source>
        <translation>Schlüssel %1, seit %2. Name und Aussteller werden nicht überprüft.</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Vergessen</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::WelcomePage</name>
    <message>
        <source>Create your first profile</source>
        <translation>Erstes Profil anlegen</translation>
    </message>
    <message>
        <source>Import profiles…</source>
        <translation>Profile importieren…</translation>
    </message>
    <message>
        <source>Save locally. Ship automatically.</source>
        <translation>Lokal speichern. Gleich online.</translation>
    </message>
    <message>
        <source>Connect your project folder to a web server.
Zembrastel takes care of the uploads.</source>
        <translation>Den Projektordner mit einem Webserver verbinden.
Zembrastel übernimmt das Hochladen.</translation>
    </message>
    <message>
        <source>FTP &amp; FTPS</source>
        <translation>FTP &amp; FTPS</translation>
    </message>
    <message>
        <source>Keychain passwords</source>
        <translation>Passwörter im Schlüsselbund</translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::WindowMenu</name>
    <message>
        <source>Program menu</source>
        <translation>Programmmenü</translation>
    </message>
</context>
</TS>
