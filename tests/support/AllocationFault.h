#pragma once

/// While an object of this class lives, TovMalloc returns null. Defined in tov_stdlib_test.cpp.
class AllocationFault
{
public:
    AllocationFault();
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
};
