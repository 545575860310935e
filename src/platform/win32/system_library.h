// A library of the system, loaded at run time from the system's own folder. The start of the program would look for it in
// the program's folder first, where others may be able to write, and the program runs as administrator. Libraries that
// Windows itself knows (KnownDLLs) need no such care.
#pragma once

// A function of a library, as the type that it is assigned to. Null if the library or the function is missing.
class FoundFunction {
  public:
    explicit FoundFunction(void* address) : address_(address) {}
    template <typename Function> operator Function*() const { return reinterpret_cast<Function*>(address_); }

  private:
    void* address_;
};

// Stays loaded to the end of the process. Any thread.
class SystemLibrary {
  public:
    // A file name without a folder.
    explicit SystemLibrary(const wchar_t* name);
    FoundFunction Find(const char* function) const;

  private:
    void* module_;  // null if it is missing
};
