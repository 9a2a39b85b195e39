// SPDX-License-Identifier: Apache-2.0
#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return 0;
}
