// The session of a program that tests library functions: the table's title has
// the parts of the function name and the library's parameter columns.
#pragma once

#include "ps.h"

class ppSession : public psSession {
  public:
    void funcTitleToCStream() override;
    void parmsTitleToCStream() override;
    void listTests(int mode) override;
};

void ppFuncTitleToCStream();
void ppParmsTitleToCStream();
