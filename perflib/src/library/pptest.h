// Base class of every test of a library function.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "ppargument.h"
#include "ppbuffer.h"
#include "ppfunc.h"
#include "ppimage.h"
#include "psiterator.h"
#include "pstest.h"
#include "zmotypes.h"

class ppTest : public psTest {
  public:
    ppTest(FuncCall funcCall, FuncInit funcInit, FuncLoop funcLoop, FuncStat funcStat,
           const psString& funcName, const psString& fileName, const psString& info);

    psResult run() override;
    bool tobeRun(psConditions& conditions) override;
    // By prefix and base name, then types, then descriptor, not by bytes.
    int compareFunc(const psTest* other) const override;

    // What a status of the library means for the running test: OK, FUNCWRN or
    // FUNCFAIL, with a message that names the function when it is not empty.
    static psResult checkStatus(int status, const psString& name);
    psResult checkStatus(int status) const { return checkStatus(status, funcName()); }

    const ppFunc& func() const { return m_func; }

    // Calls a service function that prepares data. False, after a message, when it failed.
    template <class Service, class... Args>
    static bool prepared(const Service& service, Args... args) {
        return !isFailure(checkStatus(service(args...), service.name()));
    }

    // Makes a work buffer, or a state and a work buffer, of the sizes that a service
    // function stores through its last arguments, of int or of int64_t.
    template <class Query, class... Args>
    static bool createBufferBy(ppBuffer& buffer, const Query& query, Args... args) {
        using Int = std::conditional_t<std::is_invocable_v<Query, Args..., int*>, int, int64_t>;
        Int size = 0;
        return prepared(query, args..., &size) && buffer.create(size);
    }
    template <class Query, class... Args>
    static bool createBuffersBy(ppBuffer& state, ppBuffer& buffer, const Query& query,
                                Args... args) {
        using Int =
            std::conditional_t<std::is_invocable_v<Query, Args..., int*, int*>, int, int64_t>;
        Int stateSize = 0;
        Int bufferSize = 0;
        return prepared(query, args..., &stateSize, &bufferSize) && state.create(stateSize) &&
               buffer.create(bufferSize);
    }

    static ZmoDataType libraryType(ppType type) {
        return static_cast<ZmoDataType>(ppFunc::zmoType(type));
    }

    // What a call of the current set reads and brings back, asked afresh: lists have the length
    // that the last call has given them.
    const std::vector<ppArgument>& arguments();

    static bool m_checkErrorsOnly;  // positive statuses are not reported

  protected:
    void loopData() override;
    void beginSet() override;
    psResult runTiming() override;
    void outputResult(psResult result) override;
    const void* callAddress() const override;
    void funcToCstrm() override;
    bool isFloatFunction() override;
    int printAllMemoryBlocks(const psString& title) override;
    psString regInfo() override;
    psString getComment() override;

    // Goes to the Comment cell of the current test's lines.
    void setDataComment(const psString& comment) { m_dataComment = comment; }

    virtual void printFirstDebugLine(const psString& title);
    virtual void printLastDebugLine(const psString& title);
    virtual void printFirstBlockLine(int number, psObject* object, int size);
    virtual void printLastBlockLine(int number, psObject* object);
    virtual void printVectorBlock(ppVector* vector);
    virtual void printByteBlock(void* block, int size);

    // One line about what the data of the current set made the function do
    // (share of edge pixels, filled area, corners found); shown at level INFO.
    virtual psString dataFigure();

    // Names the arguments of a call, one line each: images and vectors that are there, numbers,
    // work memory. A call touches so many elements, or all of them where that is negative.
    virtual void regArguments() {}
    void regInput(const char* name, const ppVector& vector, double touched = -1) {
        regArgument({ppRole::in, name, vector, touched});
    }
    void regOutput(const char* name, const ppVector& vector) {
        regArgument({ppRole::out, name, vector, -1});
    }
    void regInOut(const char* name, const ppVector& vector) {
        regArgument({ppRole::inOut, name, vector, -1});
    }
    void regScratch(const char* name, const ppVector& vector) {
        regArgument({ppRole::scratch, name, vector, -1});
    }
    void regScratch(const char* name, const ppBuffer& buffer) {
        regArgument({ppRole::scratch, name, buffer});
    }
    template <class T>
    void regInput(const char* name, const T* numbers, int count = 1) {
        regArgument({ppRole::in, name, ppTypeOf<T>(), numbers, count});
    }
    template <class T>
    void regOutput(const char* name, const T* numbers, int count = 1) {
        regArgument({ppRole::out, name, ppTypeOf<T>(), numbers, count});
    }

    using psTest::regCacheParm;
    // With -C the size is varied until the image (or all data together) fits into
    // the cache and then until it does not. `check` makes the data of a new size and
    // returns whether it could; without one flushData() and initData() do.
    using CheckSize = std::function<bool(const ZmoiSize&)>;
    void regCacheParm(psIterator<ZmoiSize>& size, const ppImage& image, CheckSize check = {});
    void regCacheParm(psIterator<ZmoiSize>& size, CheckSize check = {});

  private:
    void regCacheSize(psIterator<ZmoiSize>& size, const ppImage* image, CheckSize check);
    void regArgument(const ppArgument& argument);
    void showRates();

    ppFunc m_func;
    psString m_dataComment;
    std::vector<ppArgument> m_arguments;
};
