#pragma once

/// While an object of this class lives, TovMalloc returns null. tov_stdlib_test.cpp defines it.
class AllocationFault
{
public:
    AllocationFault();
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
};
