// SPDX-License-Identifier: MIT
// The owner of the precompiled header that the tests share.
int main()
{
    return 0;
}
