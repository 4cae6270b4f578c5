// Words about certificates, for the terminal and the doctor.
//
// Pure functions; any thread.
#pragma once

#include "app/diagnosis/finding.h"
#include "transport/server_probe.h"

#include <string>
#include <string_view>

namespace zembrastel {

// "2026-03-03": the day in UTC.
[[nodiscard]] std::string dayOf(std::chrono::sys_seconds instant);

// One word that stays the same, for other programs.
[[nodiscard]] std::string_view word(CertificateFault fault);

// Without a full stop: "Not the name of this server, docs.example.net"
[[nodiscard]] std::string faultText(
    CertificateFault fault, const ServerCertificate& certificate, const std::string& host);

// Of a certificate that was refused for this profile.
[[nodiscard]] Finding certificateFinding(const Profile& profile, const SeenCertificate& seen);

} // namespace zembrastel
