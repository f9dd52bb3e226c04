#!/usr/bin/env bash
# memcheck.sh PROGRAM ARGUMENT... - runs a program under valgrind; fails on a wrong access or on lost memory.
set -euo pipefail

# glibc's vector functions for wide texts read a whole register, also where the text ends before it, which
# valgrind takes for a fault, since it replaces the narrow ones only. The plain functions do not.
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-AVX512VL,-SSE4_1
exec valgrind --error-exitcode=9 --leak-check=full --show-leak-kinds=definite,indirect \
  --errors-for-leak-kinds=definite,indirect "$@"
