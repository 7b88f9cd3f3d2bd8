#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>
#include <functional>

// Shared by the parts of the library; not for use outside it.

// Runs one statement with the values bound in order. A failure is logged.
bool RunSql(QSqlQuery &query, const QString &sql, const QVariantList &values = {});

// Runs steps in one transaction of the connection: committed when they all succeed, else
// rolled back, so that a crash at any point leaves the database as it was or as it is after.
bool InTransaction(const QString &connection, const char *what,
                   const std::function<bool(QSqlDatabase &)> &steps);
