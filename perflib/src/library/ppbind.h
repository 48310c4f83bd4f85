// Reaching the measured library: its shared objects are opened by the loader's
// normal rules, and every function that a module names is bound to a typed
// pointer. What is missing stays on a stub that returns a negative status.
#pragma once

#include "psexcept.h"
#include "pslist.h"
#include "psstring.h"
#include "zmotypes.h"

// One function that some module declares. Objects live at file scope; their
// constructors run before main and only link themselves into a list.
class ppEntryBase {
  public:
    ppEntryBase(const ppEntryBase&) = delete;
    ppEntryBase& operator=(const ppEntryBase&) = delete;

    const char* name() const { return m_name; }
    bool bound() const { return m_address != nullptr; }

    static void bindAll();
    // Of the function of this name; null when the library lacks it or nothing names it.
    static const void* addressOf(const psString& name);
    static bool isBound(const psString& name) { return addressOf(name) != nullptr; }

  protected:
    explicit ppEntryBase(const char* name);
    ~ppEntryBase() = default;

  private:
    virtual void set(void* address) = 0;

    const char* m_name;
    const void* m_address = nullptr;
    ppEntryBase* m_next;
    static ppEntryBase* s_first;
};

template <class Function>
class ppEntry;

template <class Result, class... Args>
class ppEntry<Result (*)(Args...)> final : public ppEntryBase {
  public:
    explicit ppEntry(const char* name) : ppEntryBase(name) {}

    Result (*call)(Args...) = unavailable;

  private:
    static Result unavailable(Args...) {
        if constexpr (std::is_same_v<Result, ZmoStatus>)
            return zmoStsUnavailable;
        else
            return Result();
    }
    void set(void* address) override {
        call = address ? reinterpret_cast<Result (*)(Args...)>(address) : unavailable;
    }
};

// A library function that prepares data: called with the signal trap armed.
template <class Function>
class ppService;

template <class Result, class... Args>
class ppService<Result (*)(Args...)> {
  public:
    explicit ppService(const char* name) : m_entry(name) {}

    const char* name() const { return m_entry.name(); }

    Result operator()(Args... args) const {
        Result result{};
        psGuarded([&] { result = m_entry.call(args...); });
        return result;
    }

  private:
    ppEntry<Result (*)(Args...)> m_entry;
};

// The registered environment function. Silent and idle until the session wants
// the library; then it opens the shared objects once, names what is missing and
// binds; every later call only binds again.
void ppSetZmoEnvironment();

// Registers the environment function and the libraries' version queries.
bool ppRegLibrary();

// Registers the exported names of the opened shared objects for -e+ and -e-.
void ppRegLibFunctions();
