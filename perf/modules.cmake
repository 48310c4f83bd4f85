# The test modules of pscv, one source file each. To add one, add its stem.
set(PSCV_MODULES
    p_ccanny
    p_cflood
    p_cmeanstddev
    p_cnorm
    p_cstat)
