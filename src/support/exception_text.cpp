#include "support/exception_text.h"

#include <exception>
#include <new>

namespace tamarin {

std::string describeException() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "out of memory: end other programs, or raise the limit (ulimit -v), and start again";
    } catch (const std::exception& error) {
        return error.what();
    } catch (const char* text) {
        return std::string("the solver cannot go on: ") + text +
               ": check the game, and its tables and strategies with 'tamarin verify'";
    } catch (...) {
        return "an unknown failure";
    }
}

} // namespace tamarin
