// Objects with COM function tables for tests: every slot records an unexpected call until a test fills it.
#pragma once

#include <windows.h>

#include <array>
#include <initializer_list>
#include <string>
#include <vector>

// The most slots of a table that the program calls, rounded up.
constexpr size_t kFakeComSlots = 80;

struct FakeComObject {
    void** table;  // first, as in every COM object
    std::array<void*, kFakeComSlots> slots;
};

// What was called, in order, and the call that fails. For one test at a time.
inline std::vector<std::string> comCalls;
inline std::string failingComCall;

// Appends the call; returns E_FAIL if it is the failing one, else S_OK.
inline HRESULT RecordComCall(const std::string& call) {
    comCalls.push_back(call);
    return call == failingComCall ? E_FAIL : S_OK;
}

template <typename Method> void PutComMethod(FakeComObject& object, size_t slot, Method method) {
    object.slots[slot] = reinterpret_cast<void*>(method);
}

inline HRESULT STDMETHODCALLTYPE UnexpectedComCall(void*) {
    return RecordComCall("unexpected"), E_FAIL;
}

// Forgets all calls and fills every slot of the objects with UnexpectedComCall.
inline void ResetComObjects(std::initializer_list<FakeComObject*> objects) {
    comCalls.clear();
    failingComCall.clear();
    for (FakeComObject* object : objects) {
        object->table = object->slots.data();
        object->slots.fill(reinterpret_cast<void*>(UnexpectedComCall));
    }
}
