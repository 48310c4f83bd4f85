// Responses on straight lines are taken out of a map of corners or edges (zmoiLineSuppression).
#include "squares.h"

namespace {

using namespace squares;

enum class Response { corners, edges };

// Corners are few, edges run through every block of pixels.
psMapIterator<Response> Responses("Responses", "What the map holds",
                                  {{Response::corners, "corners"}, {Response::edges, "edges"}},
                                  {Response::corners, Response::edges});
psIterator<int> Radius("Radius", "Half a window, pixels", {3, 7});
psIterator<int> Threshold("Threshold", "Least roundness of what stays, of 255", {100});

int radius;
int threshold;

PP_SERVICE(zmoiFastNGetBufferSize);
PP_SERVICE(zmoiFastN_8u_C1R);
PP_SERVICE(zmoiLineSuppressionGetBufferSize);

class TimLineSuppression : public SquareTest {
  public:
    using SquareTest::SquareTest;

  protected:
    void regOwnParms() override {
        regParm(Responses);
        regParm(Radius);
        regParm(Threshold);
    }

    bool createImages() override {
        return create(pSrc, pp8u, 0) && drawSquares(pSrc) && create(pSrc2, pp8u, 1) &&
               findResponses() && create(pDst, pp8u, 2);
    }

    bool prepare() override {
        radius = Radius.value();
        threshold = Threshold.value();
        return createBufferBy(pBuffer, lib_zmoiLineSuppressionGetBufferSize, roi, radius, zmo8u, 1);
    }

    psString dataFigure() override {
        const int responses = countIn(pSrc2);
        return psFormat("%.2f%% of %d responses are removed",
                        100.0 * (responses - countIn(pDst)) / std::max(1, responses), responses);
    }

  private:
    static bool findResponses() {
        return Responses.value() == Response::edges ? findEdges(pSrc, pSrc2) : findCorners();
    }

    static bool findCorners() {
        constexpr int arc = 9;
        constexpr int contrast = 4;  // below the noise: edges answer here and there
        int count = 0;
        ppBuffer buffer;
        return createBufferBy(buffer, lib_zmoiFastNGetBufferSize, roi, zmo8u, 1) &&
               prepared(lib_zmoiFastN_8u_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pSrc2, 8u), roi, arc,
                        contrast, 0, &count, buffer.get());
    }
};

PP_REG(TimLineSuppression, zmoiLineSuppression_8u_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pSrc2, 8u),
       PP_IMAGE(pDst, 8u), roi, radius, threshold, pBuffer.get())

}  // namespace
