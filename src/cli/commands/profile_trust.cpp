#include "cli/commands.h"

#include "app/diagnosis/certificate_text.h"
#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"

namespace zembrastel::cli {
namespace {

struct TrustRequest {
    std::string name;
    std::string key;
    bool forget = false;
};

std::optional<KeyHash> givenKey(const TrustRequest& request) {
    if (request.key.empty()) return std::nullopt;
    const auto key = KeyHash::parse(request.key);
    if (key) return key;
    throw CommandError(
        ExitCode::usage,
        translate(
            "--key is the SHA-256 of a public key, as 64 hexadecimal digits or as sha256// and Base64, not %1.",
            {inQuotes(request.key)}));
}

class CertificateLines {
public:
    CertificateLines(Output& where, const Profile& shown) : output(where), profile(shown) {}

    void print(const InspectedCertificate& inspected) {
        using enum CertificateFault;
        const auto& certificate = inspected.certificate;
        faults = &inspected;
        output.line(translate("Certificate of %1, port %2", {oneLine(profile.host), std::to_string(profile.port)}));
        add(translate("Issued for"), certificate.issuedFor);
        std::vector<std::string_view> names(certificate.names.begin(), certificate.names.end());
        if (!names.empty()) add(translate("Names"), join(names, ' '));
        addFaults({otherName});
        add(translate("Issued by"), certificate.issuedBy);
        addFaults({selfSigned, unknownAuthority});
        add(translate("Valid"), translate("%1 to %2", {dayOf(certificate.validFrom), dayOf(certificate.validUntil)}));
        addFaults({expired, notYetValid, otherFault});
        add(translate("Key (SHA-256)"), certificate.key.grouped());
        if (const auto* trusted = profile.keyInForce(); trusted != nullptr && trusted->key != certificate.key) {
            add(translate("Trusted key"), trusted->key.grouped());
        }
    }

private:
    void add(const std::string& name, std::string_view value) {
        constexpr std::size_t nameWidth = 15;
        output.line("  " + padded(name, nameWidth) + oneLine(value));
    }

    void addFaults(const std::vector<CertificateFault>& kinds) {
        for (const auto fault : faults->faults) {
            if (std::ranges::find(kinds, fault) == kinds.end()) continue;
            add("", "! " + translateEngineText(faultText(fault, faults->certificate, profile.host)));
        }
    }

    Output& output;
    const Profile& profile;
    const InspectedCertificate* faults = nullptr;
};

void printAsJson(const Profile& profile, const InspectedCertificate& inspected, Output& output) {
    const auto& certificate = inspected.certificate;
    const auto* trusted = profile.keyInForce();
    auto object = JsonLine::forProfile("certificate", profile);
    object.text("issuedFor", certificate.issuedFor).text("issuedBy", certificate.issuedBy);
    object.text("validFrom", universalTime(certificate.validFrom));
    object.text("validUntil", universalTime(certificate.validUntil));
    object.list("names", certificate.names, [](auto& line, const auto& name) { line.text("name", name); });
    object.list("faults", inspected.faults, [](auto& line, auto fault) { line.text("fault", word(fault)); });
    object.text("key", certificate.key.text());
    object.flag("trusted", trusted != nullptr && trusted->key == certificate.key);
    output.line(object);
}

InspectedCertificate inspect(const Profile& profile, const CommandContext& context) {
    std::optional<InspectedCertificate> inspected;
    callServerWithoutLogin(
        profile, context, {translatable("Cannot read the certificate of %1 (%2): %3")},
        [&](const auto& control) { inspected = inspectCertificate(profile, *control, systemClock()); });
    return *std::move(inspected);
}

void requireSameKey(const KeyHash& given, const ServerCertificate& certificate, const Profile& profile) {
    if (given == certificate.key) return;
    throw CommandError(
        ExitCode::failed, translate(
                              "The key of %1 is %2, not the one of --key. Nothing was changed.",
                              {oneLine(profile.host), certificate.key.text()}));
}

bool isConfirmed(const Profile& profile, const CommandContext& context) {
    if (context.output.json() || !canAsk()) {
        throw CommandError(
            ExitCode::usage, translate("profile trust needs a terminal to ask in. --key SHA256 trusts that key without "
                                       "asking; take it from your "
                                       "provider. Nothing was changed."));
    }
    context.output.note(
        "\n"
        + translate(
            "Zembrastel accepts this one key for this profile, whatever the certificate says. The connection is "
            "encrypted as usual. If the server ever shows another key, uploads stop. Trust it only if your provider "
            "states the same "
            "key."));
    return askYesOrNo(
        translate(
            "Trust this key for %1? Anyone who holds it can read and change what you upload.",
            {inQuotes(profile.name)}),
        context.interrupt);
}

void save(Session& session, const Profile& changed) {
    try {
        (void)session.change(changed, std::nullopt); // no password to store
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot change the profile %1: %2", {inQuotes(changed.name), reasonText(error)}));
    }
}

ExitCode forgetKey(Session& session, Profile profile, Output& output) {
    const bool hadKey = std::exchange(profile.trustedKey, std::nullopt).has_value();
    if (hadKey) save(session, profile);
    if (output.json()) {
        output.line(asJsonLine("profile", encode(profile)));
    } else {
        output.line(
            hadKey ? translate("The certificate of %1 is verified again.", {oneLine(profile.host)})
                   : translate("%1 trusts no key. Nothing was changed.", {inQuotes(profile.name)}));
    }
    return ExitCode::done;
}

// Whether the key is to be saved; says why not.
bool needsTrust(const Profile& profile, const InspectedCertificate& inspected, const CommandContext& context) {
    const auto* trusted = profile.keyInForce();
    if (trusted != nullptr && trusted->key == inspected.certificate.key) {
        context.output.note(translate("This key is trusted already. Nothing was changed."));
        return false;
    }
    if (!inspected.faults.empty()) return true;
    context.output.note(translate("This certificate can be verified and needs no trust. Nothing was changed."));
    if (trusted != nullptr) {
        context.output.note(translate("The profile trusts another key. To verify the certificate instead:"));
        context.output.note(commandLine(context.options, "profile trust --forget", profile.id.text()));
    }
    return false;
}

ExitCode trustKey(const CommandContext& context, const TrustRequest& request) {
    const auto given = givenKey(request);
    auto session = Session::forChanges(context);
    Profile profile = chooseProfile(session.model().profiles(), request.name);
    if (request.forget) return forgetKey(session, profile, context.output);
    const auto inspected = inspect(profile, context);
    const auto& key = inspected.certificate.key;
    if (context.output.json()) {
        printAsJson(profile, inspected, context.output);
    } else {
        CertificateLines(context.output, profile).print(inspected);
    }
    if (given) requireSameKey(*given, inspected.certificate, profile);
    if (!needsTrust(profile, inspected, context)) return ExitCode::done;
    if (!given && !isConfirmed(profile, context)) {
        context.output.note(translate("Nothing was changed."));
        return ExitCode::failed;
    }
    const auto now = std::chrono::floor<std::chrono::seconds>(systemClock().now());
    profile.trustedKey = TrustedKey{.key = key, .host = profile.host, .port = profile.port, .since = now};
    save(session, profile);
    if (context.output.json()) {
        context.output.line(asJsonLine("profile", encode(profile)));
    } else {
        context.output.line(translate("Trusted for %1: %2", {inQuotes(profile.name), key.grouped()}));
    }
    return ExitCode::done;
}

} // namespace

void addProfileTrust(Syntax& parent) {
    auto [command, request] =
        parent.command("trust", "Show the server's certificate and trust its key for a profile", trustKey);
    command.profileArgument(request.name);
    const auto key = command.option("--key", request.key, "SHA256", "Trust this key without asking").notEmpty();
    command.flag("--forget", request.forget, "Trust no key; verify the certificate again").excludes({key});
    command.footer("For a certificate that this machine cannot verify. No login is sent. From then on exactly\n"
                   "this key is accepted for the profile. A new host or port ends the trust.\n"
                   "The key is the SHA-256 of the server's public key, as 64 hexadecimal digits or in curl's\n"
                   "form, sha256//BASE64. Ask the hosting provider for it, by telephone for example.\n\n"
                   "Example:\n"
                   "  zembrastel-cli profile trust \"My website\"");
}

} // namespace zembrastel::cli
