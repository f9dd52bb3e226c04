# The library as hosts link it: drivelog::drivelog.
