#pragma once

#include <list>
#include <string>

#include "common_service/xml.h"
#include "framework_service/resource_task.h"

/// The XML of the plug-ins' tasks. A request is
///
///     <TaskList>
///       <Task>
///         <TaskID>camera-7</TaskID>                   required, unique in the list
///         <TaskName>North gate</TaskName>             optional
///         <Cpu>1</Cpu> <Mem>..</Mem> <IO>..</IO> <Net>..</Net> <Disk>..</Disk>
///                                                     optional costs, 0 or more; 0 when left out
///         <SupportShift>0</SupportShift>              optional, 0 or 1; 1 when left out
///         <PrivateInfo><Key>value</Key></PrivateInfo> optional pairs
///       </Task>
///     </TaskList>
///
/// and elements of other names are passed over. Every operation works at the cursor.

/// Appends the tasks of the TaskList on the current level and leaves the cursor there. Returns 0;
/// or, logged, ORVA_XML_INVALID with taskList untouched.
int ReadTaskList(PELU::CXml& xml, std::list<CResourceTask>& taskList);

/// A text element as the last child of the current one.
struct CXmlText {
    const char* pszName;
    std::string strValue;
};

/// Adds an element with these children behind the current one, or as the root of an empty document,
/// and leaves the cursor on it. Returns 0; or, logged, ORVA_XML_INVALID.
int WriteElement(PELU::CXml& xml, const char* pszName, const std::list<CXmlText>& children);
