// tamarin signature: one number for what this program computes.
#include "support/interrupt.h"
#include "toolbox/command.h"
#include "toolbox/signature_report.h"

#include <memory>

namespace tamarin {

namespace {

int signature(const SignatureOptions& options) {
    const auto found = computeSignature(options.threads, [] { return interrupted(); });
    return found ? reportSignature(*found, expectedSignature(), options) : interruptStatus();
}

} // namespace

int reportSignature(const Signature& found, const Signature& expected,
                    const SignatureOptions& options) {
    const std::vector<std::string> different = partsThatDiffer(found, expected);
    if (options.json) {
        nlohmann::ordered_json json;
        json["signature"] = signatureText(found.whole());
        for (const SignaturePart& part : found.parts())
            json["parts"][part.name] = signatureText(part.value);
        json["expected"] = signatureText(expected.whole());
        json["different"] = different;
        printJson(json);
    } else {
        fmt::print("{}\n", signatureText(found.whole()));
        if (options.parts)
            for (const SignaturePart& part : found.parts())
                fmt::print("  {} {}\n", signatureText(part.value), part.name);
    }
    if (!options.check || different.empty())
        return exitDone;
    return fail(fmt::format("the signature is not {}; what differs: {}",
                            signatureText(expected.whole()), fmt::join(different, ", ")));
}

void addSignatureCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<SignatureOptions>();
    CLI::App& command = addCommand(
        app, "signature", "Print one number for what this program computes",
        "tamarin signature --check\n\n"
        "Ranks, indices, training, values, tables and a match, each in a small piece and from "
        "fixed\nseeds, hashed. Every build of the same version prints the same number, whatever "
        "the compiler,\nthe processor and the threads. Needs no files and leaves none; takes a "
        "second or two.");
    command.add_flag("--check", options->check,
                     "Exit status 1, and the parts that differ, where it is not the number that "
                     "this version must give");
    command.add_flag("--parts", options->parts, "Also a number for each part");
    addThreadsOption(command, options->threads);
    addJsonOption(command, options->json);
    command.callback([options, &status] { status = signature(*options); });
}

} // namespace tamarin
