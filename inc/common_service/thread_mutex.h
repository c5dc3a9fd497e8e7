#pragma once

#include <ace/Recursive_Thread_Mutex.h>

using HALD_Recursive_Thread_Mutex = ACE_Recursive_Thread_Mutex;
