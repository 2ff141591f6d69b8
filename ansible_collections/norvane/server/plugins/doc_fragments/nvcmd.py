# -*- coding: utf-8 -*-
# The options every module of the collection shares: where nvcmd is and
# which agent socket it talks to.
# GNU General Public License v2.0+ (see https://www.gnu.org/licenses/gpl-2.0.txt)

from __future__ import absolute_import, division, print_function
__metaclass__ = type


class ModuleDocFragment(object):

    DOCUMENTATION = r'''
options:
  nvcmd:
    description:
      - The nvcmd program on the managed host, a path or a name looked up in
        C(PATH).
    type: str
    default: nvcmd
  socket:
    description:
      - The agent's socket, when it is not the default C(/dev/nvsock).
    type: path
'''
