#pragma once

#include <string>

/// Each feeds a text to one XML reader and, when it was read, the writer's text to it again.
void FeedDatabaseXml(const std::string& strInput);
void FeedManagerXml(const std::string& strInput);
void FeedCGListXml(const std::string& strInput);
void FeedPrivateInfoXml(const std::string& strInput);
void FeedTaskFile(const std::string& strInput);
