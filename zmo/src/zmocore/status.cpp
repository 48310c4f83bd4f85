#include "zmocore.h"

const char* zmoGetStatusString(ZmoStatus status) {
    switch (status) {
        case zmoStsNoErr:
            return "zmoStsNoErr: no error";
        case zmoStsDivByZero:
            return "zmoStsDivByZero: a divisor is zero";
        case zmoStsEmptyMask:
            return "zmoStsEmptyMask: the mask selects no pixel";
        case zmoStsNoLevel:
            return "zmoStsNoLevel: the mask holds no processor level, the baseline is in use";
        case zmoStsTruncated:
            return "zmoStsTruncated: the list is full, further results were dropped";
        case zmoStsUnavailable:
            return "zmoStsUnavailable: the operation is not available";
        case zmoStsNullPtrErr:
            return "zmoStsNullPtrErr: a pointer is null";
        case zmoStsSizeErr:
            return "zmoStsSizeErr: a side of a region is zero or negative";
        case zmoStsStepErr:
            return "zmoStsStepErr: a step is too short or no multiple of the element size";
        case zmoStsRangeErr:
            return "zmoStsRangeErr: a value is outside its range";
        case zmoStsMaskSizeErr:
            return "zmoStsMaskSizeErr: the size of the filter mask is not supported";
        case zmoStsAnchorErr:
            return "zmoStsAnchorErr: the anchor lies outside its mask";
        case zmoStsBorderErr:
            return "zmoStsBorderErr: the border type is unknown";
        case zmoStsNormErr:
            return "zmoStsNormErr: the norm is unknown";
        case zmoStsCoiErr:
            return "zmoStsCoiErr: the channel of interest does not exist";
        case zmoStsScaleErr:
            return "zmoStsScaleErr: the scale factor is outside -31..31";
        case zmoStsThresholdErr:
            return "zmoStsThresholdErr: a threshold is negative, not a number or out of order";
        case zmoStsPointErr:
            return "zmoStsPointErr: a point lies outside its region";
        case zmoStsRectErr:
            return "zmoStsRectErr: a rectangle is empty or lies outside its region";
        case zmoStsConnectivityErr:
            return "zmoStsConnectivityErr: the connectivity is neither 4 nor 8";
        case zmoStsFlagErr:
            return "zmoStsFlagErr: the flag is unknown";
        case zmoStsStateErr:
            return "zmoStsStateErr: the state was not initialised for this function";
        case zmoStsDataTypeErr:
            return "zmoStsDataTypeErr: the element type is not supported";
        case zmoStsChannelsErr:
            return "zmoStsChannelsErr: the number of channels is not supported";
        case zmoStsCpuFeaturesErr:
            return "zmoStsCpuFeaturesErr: the processor lacks features of the mask";
        case zmoStsTooLargeErr:
            return "zmoStsTooLargeErr: a size does not fit its type";
        default:
            return "Unknown status";
    }
}
