// The settings of modules, kept between runs: for each module one text that all applications share,
// and one for every application that has told its name.
#include "config/parameters.h"

#include <vorn/host.h>

#include <algorithm>
#include <cstring>

#include "platform/parameter_store.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

constexpr size_t kMostName = 79;

struct ParameterState {
    char application[kMostName + 1] = "";
};

class Key {
  public:
    // An empty application name stands for the text that all share.
    Key(const char* application, const char* module, int32_t type)
        : names_{application, type == VORN_SAVER ? "Savers" : "Loaders", module} {}

    operator platform::ParameterKey() const {
        return platform::ParameterKey(names_).subspan(*names_[0] == '\0' ? 1 : 0);
    }

  private:
    const char* names_[3];
};

// A text as it is stored. Null without one, or when memory is short.
Owned<char> storedForm(const char* text) {
    Owned<char> copy(text != nullptr ? AllocString(text) : nullptr);
    if (copy != nullptr) {
        std::replace(copy.get(), copy.get() + std::strlen(copy.get()), '\n', ',');
    }
    return copy;
}

}  // namespace

const char* applicationName() { return threadState<ParameterState>().application; }

}  // namespace vorn

using namespace vorn;

const char* VORN_H_RegisterAppName(const char* name) {
    char* kept = threadState<ParameterState>().application;
    const size_t length = name == nullptr ? 0 : std::min(std::strlen(name), kMostName);
    std::memmove(kept, name == nullptr ? "" : name, length);
    kept[length] = '\0';
    return kept;
}

VORN_Bool VORN_H_ModuleStoreParameters(const char* module, int32_t type, const char* text) {
    const Owned<char> copy = storedForm(text);
    if (module == nullptr || copy == nullptr) {
        return 0;
    }
    const char* application = applicationName();
    bool stored = platform::storeParameter(Key(application, module, type), copy.get());
    if (*application != '\0') {
        stored |= platform::storeParameter(Key("", module, type), copy.get());
    }
    return stored;
}

VORN_Bool VORN_H_ModuleStoreOwnParameters(const char* module, int32_t type, const char* text) {
    if (module == nullptr) {
        return 0;
    }
    const Key key(applicationName(), module, type);
    if (text == nullptr) {
        return platform::removeParameter(key);
    }
    const Owned<char> copy = storedForm(text);
    return copy != nullptr && platform::storeParameter(key, copy.get());
}

char* VORN_H_ModuleGetParameters(const char* module, int32_t type) {
    if (module == nullptr) {
        return nullptr;
    }
    Owned<char> text;
    const char* application = applicationName();
    if (!platform::fetchParameter(Key(application, module, type), text) &&
        (*application == '\0' || !platform::fetchParameter(Key("", module, type), text))) {
        return nullptr;
    }
    if (text != nullptr) {
        std::replace(text.get(), text.get() + std::strlen(text.get()), ',', '\n');
    }
    return text.release();
}

void VORN_H_ModuleFreeParameters(char* text) { FreeMemory(text); }
