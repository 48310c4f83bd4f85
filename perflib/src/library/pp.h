// The one header of a test module: the library's test base, test data, common
// parameters, and the macros that turn a call into a registered test.
#pragma once

#include "ppbind.h"
#include "ppbuffer.h"
#include "ppcv.h"
#include "ppdefault.h"
#include "ppimage.h"
#include "ppimagetest.h"
#include "pptest.h"
#include "psbase.h"
#include "pstiming.h"

// Every module announces the library; before main, once a translation unit.
inline const bool ppLibraryRegistered = ppRegLibrary();

// "perf/<stem>" of a module's source file: what -m compares is the bare stem.
inline psString ppModulePath(const char* file) {
    return "perf/" + psString(file).getFileTitle();
}

// Makes the test object of one function. Compiled once a class: in line it would stand once a
// function and be a tenth of a module's compile time.
template <class Test>
[[gnu::noinline]] bool ppRegisterTest(psTest::FuncCall call, psTest::FuncInit init,
                                      psTest::FuncLoop loop, psTest::FuncStat stat,
                                      const char* function, const char* file, const char* info) {
    return psRegTest(new Test(call, init, loop, stat, function, ppModulePath(file), info));
}

// Stands for a function that no header declares. Its entry takes any call, so that
// nothing but the missing declaration is an error.
struct ppUndeclared {};
struct ppUndeclaredEntry {
    explicit ppUndeclaredEntry(const char*) {}
    template <class... Args>
    int call(Args&&...) const;
    template <class... Args>
    int operator()(Args&&...) const;
    static const char* name() { return ""; }
};

// What a pointer to a function, or to what stands for it, is bound to.
template <class Function>
struct ppBinding {
    static constexpr bool declared = true;
    using Entry = ppEntry<Function>;
    using Service = ppService<Function>;
};
template <class Result, class... Args>
struct ppBinding<Result (*)(Args...) noexcept> : ppBinding<Result (*)(Args...)> {};
template <>
struct ppBinding<const ppUndeclared*> {
    static constexpr bool declared = false;
    using Entry = ppUndeclaredEntry;
    using Service = ppUndeclaredEntry;
};

// A declaration of its own, in a header's stead, is what a module gives a function
// that the zmo headers lack: extern "C" ZmoStatus zmoiNew_8u_C1R(…); above its
// namespace.
//
// The compilers show errors in the macros of a system header at the module's line
// and not, macro by macro, here.
#pragma GCC system_header

// A name looked up in the global namespace is found there when a header declares
// it; else the lookup goes on through the using-directives, of which a nameless
// namespace is one, and ends at the stand-in.
#define PP_DECLARED(fn)                            \
    namespace ppUndeclaredFunctions {              \
    [[maybe_unused]] extern const ppUndeclared fn; \
    }                                              \
    using namespace ppUndeclaredFunctions;         \
    static_assert(ppBinding<decltype(&::fn)>::declared, "no header declares the function " #fn);

// Declares lib_<fn>(...) for a service function.
#define PP_SERVICE(fn) \
    PP_DECLARED(fn)    \
    static const ppBinding<decltype(&::fn)>::Service lib_##fn(#fn)

// PP_REG(TimcCanny, zmoiCanny_16s8u_C1R, pSrc1.ptr16s(), srcStep, …) registers a
// test of class TimcCanny for the function: a bound pointer, the wrappers
//   tcall_<fn>        one call with the arguments as they are now
//   tim_<fn>_loop     the fastest of n calls
//   tim_<fn>_stat     calls until a budget of clocks is spent
// and the test object. The arguments are in the library's order and are
// evaluated afresh for every call, inside the timed interval: module variables
// and their accessors, nothing that computes.
#define PP_REG(test, fn, ...) PP_DECLARED(fn) PP_REG_PLAIN("PP_REG", test, fn, __VA_ARGS__)
#define PP_REG_X(test, fn, ...) PP_DECLARED(fn) PP_REG_PLAIN("PP_REG_X", test, fn, __VA_ARGS__)

// For functions that change the data they read: `init` is an expression that
// puts the data back. It becomes tinit_<fn> and is called before every timed
// interval, never inside one. PP_REG_INIT is for the few whose tag has no I.
#define PP_REG_I(test, fn, init, ...) \
    PP_DECLARED(fn) PP_REG_RESTORED("PP_REG_I", test, fn, init, __VA_ARGS__)
#define PP_REG_I_X(test, fn, init, ...) \
    PP_DECLARED(fn) PP_REG_RESTORED("PP_REG_I_X", test, fn, init, __VA_ARGS__)
#define PP_REG_INIT(test, fn, init, ...) \
    PP_DECLARED(fn) PP_REG_RESTORED("PP_REG", test, fn, init, __VA_ARGS__)
#define PP_REG_X_INIT(test, fn, init, ...) \
    PP_DECLARED(fn) PP_REG_RESTORED("PP_REG_X", test, fn, init, __VA_ARGS__)

#define PP_REG_PLAIN(tag, test, fn, ...)                                         \
    PP_WRAP_CALL(fn, __VA_ARGS__)                                                \
    static psResult tim_##fn##_loop(int n, long long* clocks) {                  \
        return psLoopTiming<tcall_##fn, check_##fn>(n, clocks);                  \
    }                                                                            \
    static psResult tim_##fn##_stat(int* n, long long* clocks, int innerLoops) { \
        return psStatTiming<tcall_##fn, check_##fn>(n, clocks, innerLoops);      \
    }                                                                            \
    PP_WRAP_TEST(tag, test, fn, nullptr)

#define PP_REG_RESTORED(tag, test, fn, init, ...)                                       \
    PP_WRAP_CALL(fn, __VA_ARGS__)                                                       \
    static int tinit_##fn() {                                                           \
        static_cast<void>(init);                                                        \
        return 0;                                                                       \
    }                                                                                   \
    static psResult tim_##fn##_loop(int n, long long* clocks) {                         \
        return psLoopTiming<tcall_##fn, check_##fn, tinit_##fn>(n, clocks);             \
    }                                                                                   \
    static psResult tim_##fn##_stat(int* n, long long* clocks, int innerLoops) {        \
        return psStatTiming<tcall_##fn, check_##fn, tinit_##fn>(n, clocks, innerLoops); \
    }                                                                                   \
    PP_WRAP_TEST(tag, test, fn, tinit_##fn)

#define PP_WRAP_CALL(fn, ...)                                 \
    static ppBinding<decltype(&::fn)>::Entry entry_##fn(#fn); \
    [[gnu::always_inline]] static inline int tcall_##fn() {   \
        return entry_##fn.call(__VA_ARGS__);                  \
    }                                                         \
    static psResult check_##fn(int status) {                  \
        return ppTest::checkStatus(status, #fn);              \
    }

#define PP_WRAP_TEST(tag, test, fn, init)                     \
    static const bool registered_##fn = ppRegisterTest<test>( \
        tcall_##fn, init, tim_##fn##_loop, tim_##fn##_stat, #fn, __FILE__, #test "//" tag);
