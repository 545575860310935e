#include "platform/simulated/end_request.h"

#include "platform/end_request.h"

namespace {

void (*endHandler)() = nullptr;  // driver only

}  // namespace

void SetEndRequestHandler(void (*handler)()) {
    endHandler = handler;
}

void SimRequestEnd() {
    if (endHandler != nullptr) {
        endHandler();
    }
}
