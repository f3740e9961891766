// What `tamarin signature` prints.
#pragma once

#include "signature/signature.h"

namespace tamarin {

struct SignatureOptions {
    bool parts = false;
    bool check = false;
    bool json = false;
    int threads = 0;
};

// Prints the signature that was found; returns the exit status: with check, exitFailed and a line
// that names the parts where it is not the expected one.
int reportSignature(const Signature& found, const Signature& expected,
                    const SignatureOptions& options);

} // namespace tamarin
