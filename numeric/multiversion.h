// One plain function, compiled for several instruction sets; the loader takes the widest that the machine has.
//
// A multiversioned function is a plain function of an anonymous namespace, not a template and not inline, called once a
// block and not once an element. Its loops are independent over outputs, so every version gives the same bits
// (the build sets -ffp-contract=off). STUDYSTATS_ONE_VERSION compiles each kernel for the build's own level alone.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(STUDYSTATS_ONE_VERSION)
#define STUDYSTATS_MULTIVERSION __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define STUDYSTATS_MULTIVERSION
#endif
