#pragma once

/// While one of these lives, TovMalloc finds no memory. Defined in tov_stdlib_test.cpp.
class AllocationFault
{
public:
    AllocationFault();
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
};
