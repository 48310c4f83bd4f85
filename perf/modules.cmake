# The test modules of pscv, one source file each. To add one, add its stem.
set(PSCV_MODULES
    p_cadd
    p_cbound
    p_ccanny
    p_cdist
    p_cflood
    p_cgrad
    p_cintegr
    p_clabel
    p_cmarkspeckles
    p_cmeanstddev
    p_cmh
    p_cnorm
    p_crectstddev
    p_csampleline
    p_cstat
    p_cvcopysub)
