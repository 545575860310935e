#include "platform/linux/dialog_portal.h"

#include "base/text.h"
#include "platform/linux/bus_library.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr const char* kPortalLost = "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                                    "arg0='org.freedesktop.portal.Desktop',arg2=''";
// The bus may have to start the portal, and the portal the desktop's part of it, before it confirms the request.
constexpr uint64_t kAnswerMicroseconds = 10'000'000;

enum class PortalState { Asked, Open, Refused, Answered, Lost };

// The destructor closes its bus.
struct Conversation {
    Conversation() = default;
    ~Conversation() {
        if (library != nullptr && bus != nullptr) {
            library->flushCloseUnref(bus);
        }
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    const BusLibrary* library = nullptr;
    sd_bus* bus = nullptr;
    PortalState state = PortalState::Asked;
    uint32_t response = 0;  // Answered: 0 chosen, 1 cancelled, other: ended otherwise
    std::string uri;        // Answered, chosen
};

// The portal names the request after our connection and token, so that we can listen before we send it.
std::string RequestPath(const Conversation& talk, const std::string& token) {
    const char* name = nullptr;
    if (talk.library->getUniqueName(talk.bus, &name) < 0 || name == nullptr) {
        return "";
    }
    std::string sender = name[0] == ':' ? name + 1 : name;
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/request/" + sender + "/" + token;
}

int OnPlaced(sd_bus_message* message, void* userData, BusError* /*error*/) {
    auto* talk = static_cast<Conversation*>(userData);
    if (talk->state == PortalState::Asked) {
        talk->state =
            talk->library->isMethodError(message, nullptr) > 0 ? PortalState::Refused : PortalState::Open;
    }
    return 0;
}

// Returns the first string of "uris" among the results, a{sv}.
void ReadUri(const BusLibrary& library, sd_bus_message* message, std::string* uri) {
    if (library.enterContainer(message, 'a', "{sv}") < 0) {
        return;
    }
    while (library.enterContainer(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        if (library.read(message, "s", &name) < 0) {
            return;
        }
        if (std::strcmp(name, "uris") != 0) {
            if (library.skip(message, "v") < 0) {
                return;
            }
        } else {
            const char* first = nullptr;
            if (library.enterContainer(message, 'v', "as") > 0 &&
                library.enterContainer(message, 'a', "s") > 0 && library.read(message, "s", &first) > 0) {
                *uri = first;
            }
            return;
        }
        library.exitContainer(message);
    }
}

int OnResponse(sd_bus_message* message, void* userData, BusError* /*error*/) {
    auto* talk = static_cast<Conversation*>(userData);
    if (talk->library->read(message, "u", &talk->response) > 0) {
        try {
            ReadUri(*talk->library, message, &talk->uri);
            talk->state = PortalState::Answered;
        } catch (...) {
            // Out of memory. No exception may cross the library.
            talk->state = PortalState::Lost;
        }
    }
    return 0;
}

int OnPortalLost(sd_bus_message* /*message*/, void* userData, BusError* /*error*/) {
    auto* talk = static_cast<Conversation*>(userData);
    if (talk->state == PortalState::Open) {
        talk->state = PortalState::Lost;
    }
    return 0;
}

// A match rule that the bus rejects must not end the connection.
int OnInstalled(sd_bus_message* /*message*/, void* /*userData*/, BusError* /*error*/) {
    return 0;
}

bool AppendFilters(const BusLibrary& library, sd_bus_message* message,
                   std::span<const FileDialogFilter> filters) {
    bool good = library.openContainer(message, 'e', "sv") >= 0 &&
                library.append(message, "s", "filters") >= 0 &&
                library.openContainer(message, 'v', "a(sa(us))") >= 0 &&
                library.openContainer(message, 'a', "(sa(us))") >= 0;
    constexpr uint32_t kGlob = 0;
    for (const FileDialogFilter& filter : filters) {
        good = good && library.append(message, "(sa(us))", filter.name, 1, kGlob,
                                      DialogGlob(filter.pattern).c_str()) >= 0;
    }
    return good && library.closeContainer(message) >= 0 && library.closeContainer(message) >= 0 &&
           library.closeContainer(message) >= 0;
}

// The portal takes the folder as bytes with a closing zero and the name as a string.
bool AppendProposal(const BusLibrary& library, sd_bus_message* message, const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return library.append(message, "{sv}", "current_name", "s", path.c_str()) >= 0;
    }
    const std::string folder = path.substr(0, std::max<size_t>(slash, 1));
    return library.openContainer(message, 'e', "sv") >= 0 &&
           library.append(message, "s", "current_folder") >= 0 &&
           library.openContainer(message, 'v', "ay") >= 0 &&
           library.appendArray(message, 'y', folder.c_str(), folder.size() + 1) >= 0 &&
           library.closeContainer(message) >= 0 && library.closeContainer(message) >= 0 &&
           library.append(message, "{sv}", "current_name", "s", path.c_str() + slash + 1) >= 0;
}

bool AppendOptions(const BusLibrary& library, sd_bus_message* message, const DialogRequest& request,
                   const std::string& token) {
    return library.append(message, "ss", "", request.title.c_str()) >= 0 &&  // no owner window
           library.openContainer(message, 'a', "{sv}") >= 0 &&
           library.append(message, "{sv}", "handle_token", "s", token.c_str()) >= 0 &&
           library.append(message, "{sv}", "modal", "b", 0) >= 0 &&
           AppendFilters(library, message, request.filters) &&
           (request.proposed.empty() || AppendProposal(library, message, request.proposed)) &&
           library.closeContainer(message) >= 0;
}

bool SendRequest(Conversation* talk, const DialogRequest& request, const std::string& token) {
    const BusLibrary& library = *talk->library;
    sd_bus_message* message = nullptr;
    const bool sent =
        library.newMethodCall(talk->bus, &message, kPortal, kPortalPath, kChooser,
                              request.save ? "SaveFile" : "OpenFile") >= 0 &&
        AppendOptions(library, message, request, token) &&
        library.callAsync(talk->bus, nullptr, message, OnPlaced, talk, kAnswerMicroseconds) >= 0;
    library.unrefMessage(message);
    return sent;
}

void CloseDialog(const Conversation& talk, const std::string& path) {
    sd_bus_message* message = nullptr;
    if (talk.library->newMethodCall(talk.bus, &message, kPortal, path.c_str(), kRequest, "Close") >= 0) {
        talk.library->send(talk.bus, message, nullptr);
    }
    talk.library->unrefMessage(message);
}

// Waits for the response. Returns false if the dialog had to be closed before.
bool Converse(Conversation* talk) {
    const DialogLoop loop = OpenDialogLoop();
    for (;;) {
        int result = 0;
        do {
            result = talk->library->process(talk->bus, nullptr);
        } while (result > 0);
        if (result < 0) {
            talk->state = talk->state == PortalState::Asked ? PortalState::Refused : PortalState::Lost;
        }
        if (talk->state != PortalState::Asked && talk->state != PortalState::Open) {
            return true;
        }
        const int events = talk->library->getEvents(talk->bus);
        pollfd file = {talk->library->getFile(talk->bus), static_cast<short>(events < 0 ? 0 : events), 0};
        if (!TakeDialogTurn(loop, &file, 1)) {
            return false;
        }
    }
}

FileDialogResult ResultOfPortal(const Conversation& talk) {
    constexpr uint32_t kChosen = 0;
    constexpr uint32_t kClosedByPerson = 1;
    if (talk.state == PortalState::Answered && talk.response == kChosen) {
        std::string path = PathOfFileUri(talk.uri);
        if (!path.empty()) {
            return {FileDialogOutcome::Chosen, std::move(path), {}};
        }
        return {FileDialogOutcome::Unavailable,
                {},
                "Varnelle can only use files of this machine. Please choose another place."};
    }
    if (talk.state == PortalState::Answered && talk.response == kClosedByPerson) {
        return {};
    }
    return {FileDialogOutcome::Unavailable, {}, "The desktop's file dialog broke off. Please try again."};
}

bool AskOverBus(Conversation* talk, const DialogRequest& request, FileDialogResult* result) {
    static unsigned requests = 0;  // UI thread
    const std::string token = "varnelle" + std::to_string(++requests);
    const BusLibrary& library = *talk->library;
    const std::string path = RequestPath(*talk, token);
    if (path.empty() ||
        library.matchSignalAsync(talk->bus, nullptr, kPortal, path.c_str(), kRequest, "Response", OnResponse,
                                 OnInstalled, talk) < 0 ||
        library.matchAsync(talk->bus, nullptr, kPortalLost, OnPortalLost, OnInstalled, talk) < 0 ||
        !SendRequest(talk, request, token)) {
        return false;
    }
    if (!Converse(talk)) {
        CloseDialog(*talk, path);
        return true;
    }
    if (talk->state == PortalState::Refused) {
        return false;
    }
    *result = ResultOfPortal(*talk);
    return true;
}

}  // namespace

std::string PathOfFileUri(const std::string& uri) {
    constexpr std::string_view kScheme = "file://";
    if (uri.compare(0, kScheme.size(), kScheme) != 0) {
        return "";
    }
    const size_t begin = uri.find('/', kScheme.size());
    const std::string_view host = std::string_view(uri).substr(kScheme.size(), begin - kScheme.size());
    if (begin == std::string::npos || (!host.empty() && host != "localhost")) {
        return "";
    }
    std::string path;
    for (size_t i = begin; i < uri.size(); ++i) {
        if (uri[i] != '%') {
            path += uri[i];
            continue;
        }
        const int high = i + 2 < uri.size() ? HexDigit(uri[i + 1]) : -1;
        const int low = i + 2 < uri.size() ? HexDigit(uri[i + 2]) : -1;
        if (high < 0 || low < 0 || (high == 0 && low == 0)) {
            return "";
        }
        path += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return path;
}

bool AskByPortal(const DialogRequest& request, FileDialogResult* result) {
    Conversation talk;
    talk.library = LoadBusLibrary();
    if (talk.library == nullptr || talk.library->openUser(&talk.bus) < 0) {
        return false;
    }
    *result = {};
    return AskOverBus(&talk, request, result);
}
