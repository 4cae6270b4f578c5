<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>EditorRules</name>
    <message numerus="yes">
        <source>Connected. The remote folder is readable (%n items). Upload permission is checked when a file uploads.</source>
        <translation>
            <numerusform>Connected. The remote folder is readable (%n item). Upload permission is checked when a file uploads.</numerusform>
            <numerusform>Connected. The remote folder is readable (%n items). Upload permission is checked when a file uploads.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SelectionSummary</name>
    <message numerus="yes">
        <source>%n items selected</source>
        <translation>
            <numerusform>%n item selected</numerusform>
            <numerusform>%n items selected</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n folders</source>
        <translation>
            <numerusform>%n folder</numerusform>
            <numerusform>%n folders</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n file</numerusform>
            <numerusform>%n files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n exceptions</source>
        <translation>
            <numerusform>%n exception</numerusform>
            <numerusform>%n exceptions</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::BackupsSheet</name>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n file</numerusform>
            <numerusform>%n files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n versions</source>
        <translation>
            <numerusform>%n version</numerusform>
            <numerusform>%n versions</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ChoiceBanner</name>
    <message numerus="yes">
        <source>All %n files are the same on the server.</source>
        <translation>
            <numerusform>The file is the same on the server.</numerusform>
            <numerusform>All %n files are the same on the server.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>All %n files are on the server already.</source>
        <translation>
            <numerusform>The file is on the server already.</numerusform>
            <numerusform>All %n files are on the server already.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n files are the same on the server.</source>
        <translation>
            <numerusform>%1 of %n file is the same on the server.</numerusform>
            <numerusform>%1 of %n files are the same on the server.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n files are on the server already.</source>
        <translation>
            <numerusform>%1 of %n file is on the server already.</numerusform>
            <numerusform>%1 of %n files are on the server already.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Uploading the others replaces %n files on the server.</source>
        <translation>
            <numerusform>Uploading the others replaces %n file on the server.</numerusform>
            <numerusform>Uploading the others replaces %n files on the server.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Upload the other %n</source>
        <translation>
            <numerusform>Upload the other %n</numerusform>
            <numerusform>Upload the other %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Upload all %n</source>
        <translation>
            <numerusform>Upload all %n</numerusform>
            <numerusform>Upload all %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Comparing %n files with the server</source>
        <translation>
            <numerusform>Comparing %n file with the server</numerusform>
            <numerusform>Comparing %n files with the server</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n differ so far. Nothing is uploaded before you decide.</source>
        <translation>
            <numerusform>%n differs so far. Nothing is uploaded before you decide.</numerusform>
            <numerusform>%n differ so far. Nothing is uploaded before you decide.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ContentTreeModel</name>
    <message numerus="yes">
        <source>%n names match.</source>
        <translation>
            <numerusform>%n name matches.</numerusform>
            <numerusform>%n names match.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::DetailBanners</name>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>and %n more</numerusform>
            <numerusform>and %n more</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files are missing on the server.</source>
        <translation>
            <numerusform>%n file is missing on the server.</numerusform>
            <numerusform>%n files are missing on the server.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::FailureBanner</name>
    <message numerus="yes">
        <source>%n more files wait behind it.</source>
        <translation>
            <numerusform>%n more file waits behind it.</numerusform>
            <numerusform>%n more files wait behind it.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ImportSheet</name>
    <message numerus="yes">
        <source>Import %n profiles</source>
        <translation>
            <numerusform>Import %n profile</numerusform>
            <numerusform>Import %n profiles</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::NewPlaceDialog</name>
    <message numerus="yes">
        <source>Zembrastel knows %n files as uploaded to %1. The profile now names %2.</source>
        <translation>
            <numerusform>Zembrastel knows %n file as uploaded to %1. The profile now names %2.</numerusform>
            <numerusform>Zembrastel knows %n files as uploaded to %1. The profile now names %2.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Takes all %n files as uploaded already.</source>
        <translation>
            <numerusform>Takes %n file as uploaded already.</numerusform>
            <numerusform>Takes all %n files as uploaded already.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Uploads all %n files. Files of the same name are replaced.</source>
        <translation>
            <numerusform>Uploads %n file. A file of the same name is replaced.</numerusform>
            <numerusform>Uploads all %n files. Files of the same name are replaced.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::Notifier</name>
    <message numerus="yes">
        <source>%n files are newer on the server.</source>
        <translation>
            <numerusform>%n file is newer on the server.</numerusform>
            <numerusform>%n files are newer on the server.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::ProfileListModel</name>
    <message numerus="yes">
        <source>%n files are missing</source>
        <translation>
            <numerusform>%n file is missing</numerusform>
            <numerusform>%n files are missing</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files cannot be uploaded</source>
        <translation>
            <numerusform>%n file cannot be uploaded</numerusform>
            <numerusform>%n files cannot be uploaded</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RefusedFilesBanner</name>
    <message numerus="yes">
        <source>%n files cannot be uploaded.</source>
        <translation>
            <numerusform>%n file cannot be uploaded.</numerusform>
            <numerusform>%n files cannot be uploaded.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>and %n more</numerusform>
            <numerusform>and %n more</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>zembrastel::ui::RemoteChangesView</name>
    <message numerus="yes">
        <source>Download %n &amp; start watching</source>
        <translation>
            <numerusform>Download %n &amp; start watching</numerusform>
            <numerusform>Download %n &amp; start watching</numerusform>
        </translation>
    </message>
</context>
</TS>
