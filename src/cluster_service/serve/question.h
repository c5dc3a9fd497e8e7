#pragma once

#include "serve/cluster_view.h"
#include "serve/route.h"

/// Answers from the view alone, at once, on the connection's thread.
using Question = CHttpReply (*)(const CAsked& asked, const CClusterView& view);

/// Sends what the question answers, tagged by its content: who has the same already is told just
/// that. A question that needs the cluster is refused as long as there is none.
void AnswerQuestion(const CAsked& asked, Question question, bool bNeedsCluster);

/// As a row of the table names it.
/// @{
template <Question QUESTION>
void Ask(const CAsked& asked) {
    AnswerQuestion(asked, QUESTION, true);
}

template <Question QUESTION>
void AskAnyTime(const CAsked& asked) {
    AnswerQuestion(asked, QUESTION, false);
}
/// @}

/// @name The cluster
/// @{
CHttpReply ShowCluster(const CAsked& asked, const CClusterView& view);
CHttpReply ShowNodes(const CAsked& asked, const CClusterView& view);
CHttpReply ShowNode(const CAsked& asked, const CClusterView& view);
CHttpReply ShowContainers(const CAsked& asked, const CClusterView& view);
CHttpReply ShowContainer(const CAsked& asked, const CClusterView& view);
CHttpReply ShowTasks(const CAsked& asked, const CClusterView& view);
/// @}

/// @name What it goes by
/// @{
CHttpReply ShowPlugins(const CAsked& asked, const CClusterView& view);
CHttpReply ShowDocuments(const CAsked& asked, const CClusterView& view);
CHttpReply ShowDocument(const CAsked& asked, const CClusterView& view);
CHttpReply ShowStandardTasks(const CAsked& asked, const CClusterView& view);
CHttpReply ShowVersions(const CAsked& asked, const CClusterView& view);
CHttpReply ShowCgs(const CAsked& asked, const CClusterView& view);
CHttpReply ShowCenterDb(const CAsked& asked, const CClusterView& view);
CHttpReply ShowManagers(const CAsked& asked, const CClusterView& view);
/// @}

/// @name What happened
/// @{
CHttpReply ShowEvents(const CAsked& asked, const CClusterView& view);

/// The events as server-sent ones, from what the client had last.
void StreamEvents(const CAsked& asked);
/// @}

/// @name The service
/// @{
CHttpReply ShowSettings(const CAsked& asked, const CClusterView& view);
CHttpReply ShowOpenApi(const CAsked& asked, const CClusterView& view);
CHttpReply ShowMetrics(const CAsked& asked, const CClusterView& view);
CHttpReply ShowHealth(const CAsked& asked, const CClusterView& view);
CHttpReply ShowReadiness(const CAsked& asked, const CClusterView& view);
/// @}

/// The page that shows a running cluster, and the files that it is made of, by their paths. They
/// are part of the program and the same for everybody; all that moves on the page is asked from
/// the other routes.
CHttpReply ShowPageFile(const CAsked& asked, const CClusterView& view);
